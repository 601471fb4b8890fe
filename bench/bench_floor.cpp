// The least a status label that counts down in minutes and seconds can cost:
// a program that does nothing but wake once a second and send the label's one
// D-Bus signal. No Qt, no event loop, no status item behind it. bench_session
// runs it beside Narv and the peers, so that the CPU a once-a-second label
// costs on the machine is measured in the same runs as everyone else.
//
//   bench_floor            wakes once a second and sends the label
//   bench_floor --silent   only wakes once a second

#include <dbus/dbus.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <poll.h>

namespace {

long long nowMs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1000LL + ts.tv_nsec / 1000000;
}

// One XAyatanaNewLabel signal, as a status item sends when its label changes.
bool sendLabel(DBusConnection *bus, int secondsLeft)
{
    char label[16];
    std::snprintf(label, sizeof label, "%02d:%02d", secondsLeft / 60 % 100, secondsLeft % 60);
    const char *text = label;
    const char *guide = "00:00";
    DBusMessage *message = dbus_message_new_signal(
        "/StatusNotifierItem", "org.kde.StatusNotifierItem", "XAyatanaNewLabel");
    if (!message)
        return false;
    const bool ok = dbus_message_append_args(message, DBUS_TYPE_STRING, &text, DBUS_TYPE_STRING,
                                             &guide, DBUS_TYPE_INVALID) &&
                    dbus_connection_send(bus, message, nullptr);
    dbus_message_unref(message);
    dbus_connection_flush(bus);
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    const bool silent = argc > 1 && std::strcmp(argv[1], "--silent") == 0;
    DBusConnection *bus = nullptr;
    if (!silent) {
        DBusError error;
        dbus_error_init(&error);
        bus = dbus_bus_get_private(DBUS_BUS_SESSION, &error);
        if (!bus) {
            std::fprintf(stderr, "bench_floor: no session bus: %s\n", error.message);
            dbus_error_free(&error);
            return 1;
        }
        dbus_connection_set_exit_on_disconnect(bus, TRUE);
    }
    // Whole seconds from the start, so a late wake-up does not shift the next.
    const long long start = nowMs();
    for (long long tick = 1;; ++tick) {
        const long long wait = start + tick * 1000 - nowMs();
        if (wait > 0)
            poll(nullptr, 0, int(wait));
        if (bus && !sendLabel(bus, int(25 * 60 - tick % (25 * 60)))) {
            std::fprintf(stderr, "bench_floor: the label could not be sent\n");
            return 1;
        }
    }
}
