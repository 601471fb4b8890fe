#include "MainLoopBus.h"

#include "app/Log.h"
#include "app/TickPath.h"

#include <QMetaObject>
#include <QSocketNotifier>
#include <QSysInfo>
#include <QTimer>
#include <QVarLengthArray>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace {

// What an enabled watch of libdbus stands for on our side: a notifier for
// each direction it asks about.
struct WatchNotifiers {
    QSocketNotifier *read = nullptr;
    QSocketNotifier *write = nullptr;
};

} // namespace

void MainLoopBus::toggleWatch(DBusWatch *watch, void *self)
{
    auto *n = static_cast<WatchNotifiers *>(dbus_watch_get_data(watch));
    if (!n)
        return;
    const bool enabled = dbus_watch_get_enabled(watch);
    if (n->read)
        n->read->setEnabled(enabled);
    if (n->write) {
        n->write->setEnabled(enabled);
        static_cast<MainLoopBus *>(self)->m_libdbusWriting = enabled;
    }
}

namespace {

void freeWatch(void *data)
{
    auto *n = static_cast<WatchNotifiers *>(data);
    // A watch may go while its own notifier is delivering: later, not now.
    // Disabled at once: libdbus may close the socket right after (a lost bus).
    for (QSocketNotifier *notifier : {n->read, n->write}) {
        if (notifier) {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    }
    delete n;
}

void freeTimer(void *data)
{
    static_cast<QTimer *>(data)->deleteLater();
}

void toggleTimeout(DBusTimeout *timeout, void *)
{
    auto *timer = static_cast<QTimer *>(dbus_timeout_get_data(timeout));
    if (!timer)
        return;
    if (dbus_timeout_get_enabled(timeout))
        timer->start(dbus_timeout_get_interval(timeout));
    else
        timer->stop();
}

QString errorText(const DBusError &error)
{
    return QString::fromUtf8(error.message ? error.message : "unknown error");
}

} // namespace

std::unique_ptr<MainLoopBus> MainLoopBus::connectToSessionBus(QString *error)
{
    DBusError e;
    dbus_error_init(&e);
    DBusConnection *connection = dbus_bus_get_private(DBUS_BUS_SESSION, &e);
    if (!connection) {
        if (error)
            *error = errorText(e);
        dbus_error_free(&e);
        return nullptr;
    }
    // A lost bus is logged and lived with, not a reason to end the program.
    dbus_connection_set_exit_on_disconnect(connection, false);
    return std::unique_ptr<MainLoopBus>(new MainLoopBus(connection));
}

MainLoopBus::MainLoopBus(DBusConnection *connection) : m_connection(connection)
{
    dbus_connection_set_watch_functions(
        m_connection,
        [](DBusWatch *watch, void *self) -> dbus_bool_t {
            auto *bus = static_cast<MainLoopBus *>(self);
            const int fd = dbus_watch_get_unix_fd(watch);
            const unsigned flags = dbus_watch_get_flags(watch);
            bus->m_socket = fd;
            ++bus->m_watches;
            auto *n = new WatchNotifiers;
            if (flags & DBUS_WATCH_READABLE) {
                n->read = new QSocketNotifier(fd, QSocketNotifier::Read);
                QObject::connect(n->read, &QSocketNotifier::activated, bus, [bus, watch] {
                    dbus_watch_handle(watch, DBUS_WATCH_READABLE);
                    bus->dispatch();
                });
            }
            if (flags & DBUS_WATCH_WRITABLE) {
                n->write = new QSocketNotifier(fd, QSocketNotifier::Write);
                QObject::connect(n->write, &QSocketNotifier::activated, bus, [bus, watch] {
                    dbus_watch_handle(watch, DBUS_WATCH_WRITABLE);
                    bus->dispatch();
                });
            }
            dbus_watch_set_data(watch, n, freeWatch);
            toggleWatch(watch, self);
            return true;
        },
        [](DBusWatch *watch, void *self) {
            // libdbus takes its watches away before it closes the socket.
            auto *bus = static_cast<MainLoopBus *>(self);
            if (--bus->m_watches == 0)
                bus->m_socket = -1;
            if (dbus_watch_get_flags(watch) & DBUS_WATCH_WRITABLE)
                bus->m_libdbusWriting = false;
            dbus_watch_set_data(watch, nullptr, nullptr);
        },
        toggleWatch, this, nullptr);
    dbus_connection_set_timeout_functions(
        m_connection,
        [](DBusTimeout *timeout, void *self) -> dbus_bool_t {
            auto *timer = new QTimer;
            QObject::connect(timer, &QTimer::timeout, static_cast<MainLoopBus *>(self),
                             [timeout] { dbus_timeout_handle(timeout); });
            dbus_timeout_set_data(timeout, timer, freeTimer);
            toggleTimeout(timeout, self);
            return true;
        },
        [](DBusTimeout *timeout, void *) { dbus_timeout_set_data(timeout, nullptr, nullptr); },
        toggleTimeout, this, nullptr);
    dbus_connection_set_dispatch_status_function(
        m_connection,
        [](DBusConnection *, DBusDispatchStatus status, void *self) {
            if (status == DBUS_DISPATCH_DATA_REMAINS)
                static_cast<MainLoopBus *>(self)->dispatchSoon();
        },
        this, nullptr);
    dbus_connection_add_filter(m_connection, filter, this, nullptr);
    // Whatever arrived with the replies of the handshake.
    dispatchSoon();
}

MainLoopBus::~MainLoopBus()
{
    dbus_connection_remove_filter(m_connection, filter, this);
    dbus_connection_set_dispatch_status_function(m_connection, nullptr, nullptr, nullptr);
    dbus_connection_close(m_connection);
    dbus_connection_set_watch_functions(m_connection, nullptr, nullptr, nullptr, nullptr, nullptr);
    dbus_connection_set_timeout_functions(m_connection, nullptr, nullptr, nullptr, nullptr,
                                          nullptr);
    dbus_connection_unref(m_connection);
}

QString MainLoopBus::uniqueName() const
{
    return QString::fromUtf8(dbus_bus_get_unique_name(m_connection));
}

bool MainLoopBus::requestName(const QString &name, QString *error)
{
    DBusError e;
    dbus_error_init(&e);
    const int result = dbus_bus_request_name(m_connection, name.toUtf8().constData(),
                                             DBUS_NAME_FLAG_DO_NOT_QUEUE, &e);
    if (dbus_error_is_set(&e)) {
        if (error)
            *error = errorText(e);
        dbus_error_free(&e);
        return false;
    }
    if (result != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER &&
        result != DBUS_REQUEST_NAME_REPLY_ALREADY_OWNER) {
        if (error)
            *error = QStringLiteral("%1 is taken").arg(name);
        return false;
    }
    return true;
}

bool MainLoopBus::nameHasOwner(const QString &name)
{
    DBusError e;
    dbus_error_init(&e);
    const bool has = dbus_bus_name_has_owner(m_connection, name.toUtf8().constData(), &e);
    dbus_error_free(&e);
    return has;
}

void MainLoopBus::watchName(const QString &name, std::function<void(const QString &)> changed)
{
    m_watchedNames.append({name, std::move(changed)});
    const QByteArray rule = "type='signal',sender='org.freedesktop.DBus',"
                            "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                            name.toUtf8() + '\'';
    // Without an error to fill in this does not wait for the bus's answer.
    dbus_bus_add_match(m_connection, rule.constData(), nullptr);
}

bool MainLoopBus::registerObject(const QString &path, Handler handler)
{
    static const DBusObjectPathVTable vtable = {
        [](DBusConnection *, void *data) { delete static_cast<Handler *>(data); },
        objectMessage,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    auto *stored = new Handler(std::move(handler));
    DBusError e;
    dbus_error_init(&e);
    if (!dbus_connection_try_register_object_path(m_connection, path.toUtf8().constData(), &vtable,
                                                  stored, &e)) {
        LOG_WARNING(
            QStringLiteral("could not put %1 on the session bus: %2").arg(path, errorText(e)));
        dbus_error_free(&e);
        delete stored;
        return false;
    }
    return true;
}

void MainLoopBus::unregisterObject(const QString &path)
{
    dbus_connection_unregister_object_path(m_connection, path.toUtf8().constData());
}

void MainLoopBus::send(DBusMessage *message)
{
    // libdbus writes it out right here when the socket takes it; otherwise the
    // write watch finishes the job.
    dbus_connection_send(m_connection, message, nullptr);
    dbus_message_unref(message);
}

namespace {

// The D-Bus wire format, as much of it as a signal with text arguments needs:
// a header (byte order, type, flags, version, body length, serial, then an
// array of (code, variant) fields, each field on an 8-byte boundary), padding
// to 8 bytes, and the body. Boundaries count from the message's first byte;
// the next message follows the body at once. Written into a buffer on the
// stack: this runs every second, and a few hundred byte-sized appends to a
// QByteArray cost more than the rest of the tick.
using Frames = QVarLengthArray<char, 512>;

class FrameWriter {
public:
    explicit FrameWriter(Frames &out) : m_out(out), m_start(out.size()) {}

    void align(qsizetype boundary)
    {
        while ((m_out.size() - m_start) % boundary)
            m_out.append('\0');
    }
    void byte(char b) { m_out.append(b); }
    // In this machine's byte order, which the message's first byte states.
    void uint32(quint32 value)
    {
        align(4);
        m_out.append(reinterpret_cast<const char *>(&value), 4);
    }
    void setUint32At(qsizetype at, quint32 value) { std::memcpy(m_out.data() + at, &value, 4); }
    // "s" and "o": a length, the bytes, a NUL.
    void string(const char *text, qsizetype size)
    {
        uint32(quint32(size));
        m_out.append(text, size);
        m_out.append('\0');
    }
    // The same from text that is all ASCII without NUL (as the time is),
    // without making a UTF-8 copy first; false, and nothing written, otherwise.
    bool asciiString(const QString &text)
    {
        for (const QChar c : text) {
            if (unsigned(c.unicode()) - 1u >= 0x7fu)
                return false;
        }
        uint32(quint32(text.size()));
        for (const QChar c : text)
            m_out.append(char(c.unicode()));
        m_out.append('\0');
        return true;
    }
    // "g": the same with a one-byte length.
    void signature(const char *text, qsizetype size)
    {
        byte(char(size));
        m_out.append(text, size);
        m_out.append('\0');
    }
    // One header field: (code, variant of the given type).
    void field(char code, char type, const char *value, qsizetype size)
    {
        align(8);
        byte(code);
        signature(&type, 1);
        if (type == 'g')
            signature(value, size);
        else
            string(value, size);
    }
    void field(char code, char type, const char *value)
    {
        field(code, type, value, qsizetype(std::strlen(value)));
    }
    qsizetype size() const { return m_out.size(); }

private:
    Frames &m_out;
    qsizetype m_start;
};

// Our own serials run from 2^31 to 2^32 - 1 and round again; 0 is not a serial.
NARV_TICK_PATH quint32 nextOwnSerial(quint32 serial)
{
    return serial == 0xffffffffu ? 0x80000000u : serial + 1;
}

void writeFrames(Frames &out, const char *path, const char *iface,
                 const QList<MainLoopBus::TextSignal> &list, quint32 firstSerial)
{
    static constexpr char textSignature[] = "ssssssss"; // up to eight texts a signal
    quint32 serial = firstSerial;
    for (const MainLoopBus::TextSignal &signal : list) {
        const qsizetype texts = std::min<qsizetype>(signal.texts.size(), 8);
        FrameWriter w(out);
        w.byte(QSysInfo::ByteOrder == QSysInfo::LittleEndian ? 'l' : 'B');
        w.byte(char(DBUS_MESSAGE_TYPE_SIGNAL));
        w.byte(char(DBUS_HEADER_FLAG_NO_REPLY_EXPECTED)); // as libdbus marks signals
        w.byte(char(DBUS_MAJOR_PROTOCOL_VERSION));
        const qsizetype bodyLengthAt = w.size();
        w.uint32(0); // filled in below
        w.uint32(serial);
        const qsizetype fieldsLengthAt = w.size();
        w.uint32(0); // filled in below
        const qsizetype fieldsStart = w.size();
        w.field(char(DBUS_HEADER_FIELD_PATH), 'o', path);
        w.field(char(DBUS_HEADER_FIELD_INTERFACE), 's', iface);
        w.field(char(DBUS_HEADER_FIELD_MEMBER), 's', signal.member);
        if (texts > 0)
            w.field(char(DBUS_HEADER_FIELD_SIGNATURE), 'g', textSignature, texts);
        w.setUint32At(fieldsLengthAt, quint32(w.size() - fieldsStart));
        w.align(8);
        const qsizetype bodyStart = w.size();
        for (qsizetype i = 0; i < texts; ++i) {
            if (w.asciiString(signal.texts.at(i)))
                continue;
            // UTF-8, which toUtf8() always gives, up to the first NUL, as
            // libdbus would take it from a C string.
            const QByteArray utf8 = signal.texts.at(i).toUtf8();
            w.string(utf8.constData(), qsizetype(std::strlen(utf8.constData())));
        }
        w.setUint32At(bodyLengthAt, quint32(w.size() - bodyStart));
        serial = nextOwnSerial(serial);
    }
}

} // namespace

QByteArray MainLoopBus::textSignalFrames(const char *path, const char *iface,
                                         const QList<TextSignal> &list, quint32 firstSerial)
{
    Frames frames;
    writeFrames(frames, path, iface, list, firstSerial);
    return QByteArray(frames.constData(), frames.size());
}

NARV_TICK_PATH bool MainLoopBus::writeWhole(const char *data, qsizetype size)
{
    const int fd = m_socket;
    if (fd < 0)
        return false;
    qsizetype written = 0;
    while (written < size) {
        const ssize_t n =
            ::send(fd, data + written, size_t(size - written), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            written += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (written == 0)
            return false; // nothing went out: libdbus can still send it whole
        // Half a message is on the bus, so the rest has to follow before
        // anything else. The bus daemon has stopped reading for the moment
        // (its buffer for us is full); wait for it.
        pollfd p{fd, POLLOUT, 0};
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK)
            break;
        if (::poll(&p, 1, 5000) <= 0)
            break;
    }
    if (written < size) {
        // The stream is cut in the middle of a message: nothing more can be
        // understood on it. Closing it makes libdbus report the connection lost.
        LOG_WARNING(QStringLiteral("the session bus stopped reading the status item's messages; "
                                   "its connection is closed"));
        ::shutdown(fd, SHUT_RDWR);
    }
    return true;
}

NARV_TICK_PATH bool MainLoopBus::writeOwn(const char *data, qsizetype size, int count)
{
    // A connection that has gone takes no write either, and libdbus says so
    // when the caller sends through it instead.
    if (m_libdbusWriting || !writeWhole(data, size))
        return false;
    for (int i = 0; i < count; ++i)
        m_ownSerial = nextOwnSerial(m_ownSerial);
    return true;
}

void MainLoopBus::sendTextSignals(const char *path, const char *iface,
                                  const QList<TextSignal> &list)
{
    if (list.isEmpty())
        return;
    const bool fits = std::all_of(list.cbegin(), list.cend(),
                                  [](const TextSignal &s) { return s.texts.size() <= 8; });
    if (fits) {
        Frames frames;
        writeFrames(frames, path, iface, list, m_ownSerial);
        if (writeOwn(frames.constData(), frames.size(), int(list.size())))
            return;
    }
    for (const TextSignal &signal : list)
        sendThroughLibdbus(path, iface, signal);
}

void MainLoopBus::sendThroughLibdbus(const char *path, const char *iface, const TextSignal &signal)
{
    DBusMessage *message = dbus_message_new_signal(path, iface, signal.member);
    DBusMessageIter it;
    dbus_message_iter_init_append(message, &it);
    for (const QString &text : signal.texts)
        DBusWrite::string(&it, text);
    send(message);
}

namespace {
NARV_TICK_PATH bool isAscii(QStringView text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}
} // namespace

NARV_TICK_PATH void MainLoopBus::sendTextSignal(const char *path, const char *iface,
                                                const char *member,
                                                std::initializer_list<QStringView> texts)
{
    KeptFrame &kept = m_kept;
    // The same string constants as last time, and texts that fit their places.
    bool same = kept.member == member && kept.path == path && kept.iface == iface &&
                kept.textAt.size() == qsizetype(texts.size());
    for (qsizetype i = 0; same && i < kept.textAt.size(); ++i) {
        const QStringView text = texts.begin()[i];
        same = text.size() == kept.textSize[i] && isAscii(text);
    }
    const auto asSignal = [&] {
        TextSignal signal{member, {}};
        for (const QStringView text : texts)
            signal.texts.append(text.toString());
        return signal;
    };
    if (!same) {
        const QList<TextSignal> signal{asSignal()};
        if (texts.size() > 8 || !std::all_of(texts.begin(), texts.end(), isAscii)) {
            kept = {};
            sendTextSignals(path, iface, signal);
            return;
        }
        Frames frames;
        writeFrames(frames, path, iface, signal, m_ownSerial);
        kept = {path, iface, member, QByteArray(frames.constData(), frames.size()), {}, {}};
        // The body starts at the first multiple of 8 after the header
        // fields; each text is a length, its bytes and a NUL, 4-aligned.
        quint32 fields = 0;
        std::memcpy(&fields, kept.bytes.constData() + 12, 4);
        qsizetype at = (16 + qsizetype(fields) + 7) & ~qsizetype(7);
        for (const QStringView text : texts) {
            at = (at + 3) & ~qsizetype(3);
            kept.textAt.append(at + 4);
            kept.textSize.append(text.size());
            at += 4 + text.size() + 1;
        }
    }
    char *bytes = kept.bytes.data();
    std::memcpy(bytes + 8, &m_ownSerial, 4); // the serial, in our byte order
    for (qsizetype i = 0; i < kept.textAt.size(); ++i) {
        char *to = bytes + kept.textAt[i];
        for (const QChar c : texts.begin()[i])
            *to++ = char(c.unicode());
    }
    if (!writeOwn(bytes, kept.bytes.size(), 1))
        sendThroughLibdbus(path, iface, asSignal());
}

void MainLoopBus::callAsync(DBusMessage *call, std::function<void(DBusMessage *)> done,
                            int timeoutMs)
{
    DBusPendingCall *pending = nullptr;
    const bool sent = dbus_connection_send_with_reply(m_connection, call, &pending, timeoutMs);
    dbus_message_unref(call);
    if (!sent || !pending) {
        done(nullptr);
        return;
    }
    using Done = std::function<void(DBusMessage *)>;
    dbus_pending_call_set_notify(
        pending,
        [](DBusPendingCall *p, void *data) {
            DBusMessage *reply = dbus_pending_call_steal_reply(p);
            (*static_cast<Done *>(data))(reply);
            if (reply)
                dbus_message_unref(reply);
            dbus_pending_call_unref(p);
        },
        new Done(std::move(done)), [](void *data) { delete static_cast<Done *>(data); });
}

void MainLoopBus::dispatchSoon()
{
    if (m_dispatchPending)
        return;
    m_dispatchPending = true;
    QMetaObject::invokeMethod(this, &MainLoopBus::dispatch, Qt::QueuedConnection);
}

void MainLoopBus::dispatch()
{
    m_dispatchPending = false;
    while (dbus_connection_dispatch(m_connection) == DBUS_DISPATCH_DATA_REMAINS) {
    }
}

DBusHandlerResult MainLoopBus::filter(DBusConnection *, DBusMessage *message, void *self)
{
    if (!dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged"))
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    const char *name = nullptr;
    const char *oldOwner = nullptr;
    const char *newOwner = nullptr;
    if (!dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING,
                               &oldOwner, DBUS_TYPE_STRING, &newOwner, DBUS_TYPE_INVALID))
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    const QString changed = QString::fromUtf8(name);
    const QString owner = QString::fromUtf8(newOwner);
    // A copy: a callback may watch another name.
    const auto watched = static_cast<MainLoopBus *>(self)->m_watchedNames;
    for (const auto &[watchedName, callback] : watched) {
        if (watchedName == changed)
            callback(owner);
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

DBusHandlerResult MainLoopBus::objectMessage(DBusConnection *connection, DBusMessage *message,
                                             void *handler)
{
    if (dbus_message_get_type(message) != DBUS_MESSAGE_TYPE_METHOD_CALL)
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    DBusMessage *reply = (*static_cast<Handler *>(handler))(message);
    if (!reply)
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED; // libdbus answers UnknownMethod
    if (!dbus_message_get_no_reply(message))
        dbus_connection_send(connection, reply, nullptr);
    dbus_message_unref(reply);
    return DBUS_HANDLER_RESULT_HANDLED;
}

// --- values

void DBusWrite::string(DBusMessageIter *it, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    const char *data = utf8.constData();
    dbus_message_iter_append_basic(it, DBUS_TYPE_STRING, &data);
}

void DBusWrite::objectPath(DBusMessageIter *it, const QString &path)
{
    const QByteArray utf8 = path.toUtf8();
    const char *data = utf8.constData();
    dbus_message_iter_append_basic(it, DBUS_TYPE_OBJECT_PATH, &data);
}

namespace {
void stringArray(DBusMessageIter *it, const QStringList &list)
{
    DBusMessageIter array;
    dbus_message_iter_open_container(it, DBUS_TYPE_ARRAY, "s", &array);
    for (const QString &s : list)
        DBusWrite::string(&array, s);
    dbus_message_iter_close_container(it, &array);
}
} // namespace

void DBusWrite::variant(DBusMessageIter *it, const QVariant &value)
{
    const QMetaType type = value.metaType();
    const char *signature = "s";
    if (type == QMetaType::fromType<bool>())
        signature = "b";
    else if (type == QMetaType::fromType<int>())
        signature = "i";
    else if (type == QMetaType::fromType<uint>())
        signature = "u";
    else if (type == QMetaType::fromType<QByteArray>())
        signature = "ay";
    else if (type == QMetaType::fromType<QStringList>())
        signature = "as";
    else if (type == QMetaType::fromType<QList<QStringList>>())
        signature = "aas";
    else if (type == QMetaType::fromType<QVariantMap>())
        signature = "a{sv}";
    else if (type != QMetaType::fromType<QString>())
        LOG_WARNING(QStringLiteral("status item: a value of type %1 sent as an empty text")
                        .arg(QString::fromLatin1(type.name())));

    DBusMessageIter inner;
    dbus_message_iter_open_container(it, DBUS_TYPE_VARIANT, signature, &inner);
    switch (signature[0] == 'a' ? signature[1] : signature[0]) {
    case 'b': {
        const dbus_bool_t b = value.toBool();
        dbus_message_iter_append_basic(&inner, DBUS_TYPE_BOOLEAN, &b);
        break;
    }
    case 'i': {
        const dbus_int32_t i = value.toInt();
        dbus_message_iter_append_basic(&inner, DBUS_TYPE_INT32, &i);
        break;
    }
    case 'u': {
        const dbus_uint32_t u = value.toUInt();
        dbus_message_iter_append_basic(&inner, DBUS_TYPE_UINT32, &u);
        break;
    }
    case 'y': {
        const QByteArray bytes = value.toByteArray();
        const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
        DBusMessageIter array;
        dbus_message_iter_open_container(&inner, DBUS_TYPE_ARRAY, "y", &array);
        dbus_message_iter_append_fixed_array(&array, DBUS_TYPE_BYTE, &data, int(bytes.size()));
        dbus_message_iter_close_container(&inner, &array);
        break;
    }
    case 'a': { // aas
        DBusMessageIter array;
        dbus_message_iter_open_container(&inner, DBUS_TYPE_ARRAY, "as", &array);
        for (const QStringList &list : value.value<QList<QStringList>>())
            stringArray(&array, list);
        dbus_message_iter_close_container(&inner, &array);
        break;
    }
    case '{':
        properties(&inner, value.toMap());
        break;
    default:
        if (signature[0] == 'a')
            stringArray(&inner, value.toStringList());
        else
            string(&inner, value.toString());
    }
    dbus_message_iter_close_container(it, &inner);
}

void DBusWrite::properties(DBusMessageIter *it, const QVariantMap &map)
{
    DBusMessageIter array;
    dbus_message_iter_open_container(it, DBUS_TYPE_ARRAY, "{sv}", &array);
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        DBusMessageIter pair;
        dbus_message_iter_open_container(&array, DBUS_TYPE_DICT_ENTRY, nullptr, &pair);
        string(&pair, entry.key());
        variant(&pair, entry.value());
        dbus_message_iter_close_container(&array, &pair);
    }
    dbus_message_iter_close_container(it, &array);
}

QVariant DBusRead::next(DBusMessageIter *it)
{
    QVariant value;
    switch (dbus_message_iter_get_arg_type(it)) {
    case DBUS_TYPE_INT32: {
        dbus_int32_t i = 0;
        dbus_message_iter_get_basic(it, &i);
        value = int(i);
        break;
    }
    case DBUS_TYPE_UINT32: {
        dbus_uint32_t u = 0;
        dbus_message_iter_get_basic(it, &u);
        value = uint(u);
        break;
    }
    case DBUS_TYPE_BOOLEAN: {
        dbus_bool_t b = false;
        dbus_message_iter_get_basic(it, &b);
        value = bool(b);
        break;
    }
    case DBUS_TYPE_STRING:
    case DBUS_TYPE_OBJECT_PATH: {
        const char *s = nullptr;
        dbus_message_iter_get_basic(it, &s);
        value = QString::fromUtf8(s);
        break;
    }
    case DBUS_TYPE_VARIANT: {
        DBusMessageIter inner;
        dbus_message_iter_recurse(it, &inner);
        value = next(&inner);
        break;
    }
    default:
        return {};
    }
    dbus_message_iter_next(it);
    return value;
}

QList<int> DBusRead::intList(DBusMessageIter *it)
{
    QList<int> list;
    if (dbus_message_iter_get_arg_type(it) != DBUS_TYPE_ARRAY)
        return list;
    DBusMessageIter array;
    dbus_message_iter_recurse(it, &array);
    while (dbus_message_iter_get_arg_type(&array) == DBUS_TYPE_INT32)
        list.append(next(&array).toInt());
    dbus_message_iter_next(it);
    return list;
}

QStringList DBusRead::stringList(DBusMessageIter *it)
{
    QStringList list;
    if (dbus_message_iter_get_arg_type(it) != DBUS_TYPE_ARRAY)
        return list;
    DBusMessageIter array;
    dbus_message_iter_recurse(it, &array);
    while (dbus_message_iter_get_arg_type(&array) == DBUS_TYPE_STRING)
        list.append(next(&array).toString());
    dbus_message_iter_next(it);
    return list;
}
