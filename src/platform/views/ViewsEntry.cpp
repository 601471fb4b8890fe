#include "platform/views/ViewsModule.h"
#include "windows/QmlWindowBackend.h"

// The module's one entry point, looked up by name once it is loaded. The
// module resolves the core's symbols against the program (which exports
// them), so both share one AppState, one log and one settings store.
extern "C" Q_DECL_EXPORT WindowBackend *narv_views_create_window_backend()
{
    return new QmlWindowBackend;
}
