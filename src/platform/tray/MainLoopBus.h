#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVarLengthArray>
#include <QVariant>

#include <dbus/dbus.h>

#include <functional>
#include <initializer_list>
#include <memory>

// A connection to the session bus of the status item's own, served on the
// main thread's event loop: a message goes out from the thread that sends it,
// at once. QtDBus hands every message to a thread of its own and wakes that
// thread for each one; the item's label changes every second, which would be
// a second wake-up every second for the whole life of the process (see
// bench/results.md). Used from the main thread only.
class MainLoopBus : public QObject {
    Q_OBJECT
public:
    // Answers a method call to an object: a reply or an error made with
    // dbus_message_new_method_return() / dbus_message_new_error(), or null for
    // "no such method". The bus takes the reply.
    using Handler = std::function<DBusMessage *(DBusMessage *call)>;

    // Null, with the reason in *error, when there is no session bus.
    static std::unique_ptr<MainLoopBus> connectToSessionBus(QString *error);
    ~MainLoopBus() override;

    QString uniqueName() const;
    // Takes a well-known name; false when someone else holds it.
    bool requestName(const QString &name, QString *error);
    // Asks the bus whether someone holds this name (waits for the answer).
    bool nameHasOwner(const QString &name);
    // Calls back with the new owner ("" when it went away) whenever the
    // name changes hands.
    void watchName(const QString &name, std::function<void(const QString &newOwner)> changed);

    bool registerObject(const QString &path, Handler handler);
    void unregisterObject(const QString &path);

    // Sends a signal or call and drops our reference to it.
    void send(DBusMessage *message);

    // A signal whose arguments are all texts ("s"), as the status item sends
    // them with every tick of the countdown.
    struct TextSignal {
        const char *member;
        QStringList texts; // more than eight go through libdbus
    };
    // Sends the signals from `path` and `iface`, in this order, with one write
    // on the socket. libdbus is not asked to build them: building two small
    // messages with it runs through so much of its code (header fields,
    // signatures, type readers: 50,000 instructions) that, in a process woken
    // once a second with cold caches, it took a quarter of the tick's CPU
    // time (see bench/findings.md). When libdbus has messages of its own
    // waiting to go out, or the socket takes nothing, they go through libdbus
    // after all, so messages reach the bus in the order they were sent.
    void sendTextSignals(const char *path, const char *iface, const QList<TextSignal> &list);
    // One such signal, as the label goes every second. The frame written last
    // time is kept: when the texts are ASCII and as long as then (the time
    // "24:59" after "25:00"), their bytes and the serial are written over it
    // and it goes out again, with nothing built. Otherwise as above.
    void sendTextSignal(const char *path, const char *iface, const char *member,
                        std::initializer_list<QStringView> texts);
    // What sendTextSignals() writes: the signals in D-Bus wire format, serial
    // after serial, in this machine's byte order.
    static QByteArray textSignalFrames(const char *path, const char *iface,
                                       const QList<TextSignal> &list, quint32 firstSerial);

    // Calls a method; the callback gets the reply or the error, or null when
    // the connection went away first.
    void callAsync(DBusMessage *call, std::function<void(DBusMessage *reply)> done,
                   int timeoutMs = 25000);

private:
    explicit MainLoopBus(DBusConnection *connection);
    static void toggleWatch(DBusWatch *watch, void *self);
    void dispatchSoon();
    void dispatch();

    static DBusHandlerResult filter(DBusConnection *, DBusMessage *message, void *self);
    static DBusHandlerResult objectMessage(DBusConnection *, DBusMessage *message, void *handler);

    // Writes all of data to the socket; false when not one byte went out.
    bool writeWhole(const char *data, qsizetype size);
    // Writes frames of ours with the next serials, unless libdbus has messages
    // of its own waiting; false when they did not go (send them through libdbus).
    bool writeOwn(const char *data, qsizetype size, int count);
    // Builds the signal with libdbus and sends it, behind whatever libdbus has waiting.
    void sendThroughLibdbus(const char *path, const char *iface, const TextSignal &signal);

    DBusConnection *m_connection = nullptr;
    // The bus socket, known from libdbus's watches on it: -1 once they are
    // gone (libdbus closes it right after), so a write never reaches a
    // descriptor that has been closed and given to something else.
    int m_socket = -1;
    int m_watches = 0;
    // libdbus has bytes of its own waiting to go out: it asks to hear when
    // the socket takes more (its write watch is on) exactly while it holds
    // messages it could not write whole, so this is known without asking it
    // (and taking its lock) at each tick.
    bool m_libdbusWriting = false;
    bool m_dispatchPending = false;
    // Serials of the frames sendTextSignals() writes itself. libdbus numbers
    // its own messages from 1 up; ours start half-way, so the two never meet
    // (this connection sends a few messages a second).
    quint32 m_ownSerial = 0x80000000u;
    // The frame sendTextSignal() wrote last, when its texts were all ASCII:
    // where each text's bytes are, and how many.
    struct KeptFrame {
        const char *path = nullptr;
        const char *iface = nullptr;
        const char *member = nullptr;
        QByteArray bytes;
        QVarLengthArray<qsizetype, 4> textAt;
        QVarLengthArray<qsizetype, 4> textSize;
    } m_kept;
    QList<QPair<QString, std::function<void(const QString &)>>> m_watchedNames;
};

// Writing D-Bus values from Qt ones, for the item and its menu.
namespace DBusWrite {
void string(DBusMessageIter *it, const QString &text);
void objectPath(DBusMessageIter *it, const QString &path);
// A variant holding the value: text "s", bool "b", int "i", unsigned "u", bytes
// "ay", a string list "as", a list of string lists "aas" and a map "a{sv}"
// (everything a menu item's properties hold), and what StatusNotifierTypes.h
// declares. Anything else is written as an empty text, and logged.
void variant(DBusMessageIter *it, const QVariant &value);
// a{sv}
void properties(DBusMessageIter *it, const QVariantMap &map);
} // namespace DBusWrite

// Reading the arguments of a call.
namespace DBusRead {
// Reads the basic value at the iterator (i, u, s, b, o, or a variant of one)
// and steps on; an invalid QVariant when there is none.
QVariant next(DBusMessageIter *it);
// "ai" or "as" at the iterator, stepping on.
QList<int> intList(DBusMessageIter *it);
QStringList stringList(DBusMessageIter *it);
} // namespace DBusRead
