#include <QtGlobal>

#include <canberra.h>

// The sounds module's entry point, looked up by name once it is loaded (see
// BreakSounds.h). One context for the life of the process.
extern "C" Q_DECL_EXPORT int narv_sounds_play(const char *eventId, const char *description,
                                              const char **error)
{
    static ca_context *context = [] {
        ca_context *made = nullptr;
        if (ca_context_create(&made) != CA_SUCCESS)
            return static_cast<ca_context *>(nullptr);
        ca_context_change_props(made, CA_PROP_APPLICATION_NAME, "Narv", CA_PROP_APPLICATION_ID,
                                "app.narv.Narv", nullptr);
        return made;
    }();
    if (!context) {
        *error = "no sound context";
        return -1;
    }
    // An event sound: the desktop's event volume applies, and its theme.
    const int result =
        ca_context_play(context, 0, CA_PROP_EVENT_ID, eventId, CA_PROP_EVENT_DESCRIPTION,
                        description, CA_PROP_MEDIA_ROLE, "event", nullptr);
    if (result != CA_SUCCESS)
        *error = ca_strerror(result);
    return result;
}
