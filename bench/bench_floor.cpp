// The least a status label that counts down in minutes and seconds can cost:
// a program that does nothing but wake once a second and send the label's one
// D-Bus signal, with no status item behind it. bench_session runs it beside
// Narv and the peers, so that the CPU a once-a-second label costs on the
// machine is measured in the same runs as everyone else.
//
// Built twice: bench_floor waits in poll(), with no event loop at all;
// bench_floor_qt (FLOOR_QT) is a QCoreApplication woken by a precise
// one-second QTimer, the least a Qt program does for the same.
//
//   bench_floor[_qt]            wakes once a second and sends the label
//   bench_floor[_qt] --silent   only wakes once a second

#include <dbus/dbus.h>

#ifdef FLOOR_QT
#include <QCoreApplication>
#include <QTimer>
#endif

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>

namespace {

// One XAyatanaNewLabel signal, as a status item sends when its label
// changes, marshalled once by libdbus. Each second only its serial and the
// label's digits change, and the bytes go out in one send() on the bus's
// socket: no message is built while counting.
struct LabelFrame {
    char *bytes = nullptr;
    int size = 0;
    char *digits = nullptr; // "mm:ss" inside bytes
};

bool makeFrame(LabelFrame &frame)
{
    const char *text = "25:00";
    const char *guide = "00:00";
    DBusMessage *message = dbus_message_new_signal(
        "/StatusNotifierItem", "org.kde.StatusNotifierItem", "XAyatanaNewLabel");
    if (!message || !dbus_message_append_args(message, DBUS_TYPE_STRING, &text, DBUS_TYPE_STRING,
                                              &guide, DBUS_TYPE_INVALID))
        return false;
    dbus_message_set_serial(message, 1);
    const bool ok = dbus_message_marshal(message, &frame.bytes, &frame.size);
    dbus_message_unref(message);
    if (!ok || frame.bytes[0] != 'l')
        return false;
    frame.digits = static_cast<char *>(memmem(frame.bytes, frame.size, text, 5));
    return frame.digits != nullptr;
}

bool sendLabel(int socket, LabelFrame &frame, uint32_t serial, int secondsLeft)
{
    std::memcpy(frame.bytes + 8, &serial, 4); // little-endian, as marshalled
    frame.digits[0] = char('0' + secondsLeft / 600 % 10);
    frame.digits[1] = char('0' + secondsLeft / 60 % 10);
    frame.digits[3] = char('0' + secondsLeft % 60 / 10);
    frame.digits[4] = char('0' + secondsLeft % 10);
    return send(socket, frame.bytes, size_t(frame.size), MSG_NOSIGNAL) == frame.size;
}

} // namespace

int main(int argc, char **argv)
{
    const bool silent = argc > 1 && std::strcmp(argv[1], "--silent") == 0;
    int socket = -1;
    LabelFrame frame;
    if (!silent) {
        DBusError error;
        dbus_error_init(&error);
        DBusConnection *bus = dbus_bus_get_private(DBUS_BUS_SESSION, &error);
        if (!bus) {
            std::fprintf(stderr, "bench_floor: no session bus: %s\n", error.message);
            dbus_error_free(&error);
            return 1;
        }
        if (!dbus_connection_get_socket(bus, &socket) || !makeFrame(frame)) {
            std::fprintf(stderr, "bench_floor: cannot write on the bus\n");
            return 1;
        }
    }
    long long tick = 0;
    const auto onTick = [&] {
        ++tick;
        if (socket >= 0 &&
            !sendLabel(socket, frame, uint32_t(tick + 1), int(25 * 60 - tick % (25 * 60)))) {
            std::fprintf(stderr, "bench_floor: the label could not be sent\n");
            std::exit(1);
        }
    };
#ifdef FLOOR_QT
    QCoreApplication app(argc, argv);
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, onTick);
    timer.start(1000);
    return app.exec();
#else
    const auto nowMs = [] {
        timespec ts{};
        clock_gettime(CLOCK_MONOTONIC, &ts);
        return ts.tv_sec * 1000LL + ts.tv_nsec / 1000000;
    };
    // Whole seconds from the start, so a late wake-up does not shift the next.
    const long long start = nowMs();
    for (;;) {
        const long long wait = start + (tick + 1) * 1000 - nowMs();
        if (wait > 0)
            poll(nullptr, 0, int(wait));
        onTick();
    }
#endif
}
