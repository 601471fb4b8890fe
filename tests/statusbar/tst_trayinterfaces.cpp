// The status item and its menu serve the interfaces of their checked-in XML
// files, read the way a panel reads them, over a private session bus (the test
// runs under dbus-run-session): Introspect says what the file says, every
// property comes with the type the file gives it, the properties are
// read-only, unknown names are errors. Like the counting process, this is a
// QCoreApplication without QtGui: the emblem and the menu's own icons, drawn
// while building, reach the panel all the same. And the label signals the
// item writes onto its socket itself are, byte for byte, what libdbus writes.
//
// The item lives in this process on its own main-thread connection; the
// "panel" is a QtDBus connection of the test, called asynchronously so the
// item can answer from this thread.

#include "TestSupport.h"

#include "DBusMenuExporter.h"
#include "DBusPlain.h"
#include "MainLoopBus.h"
#include "StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <dbus/dbus.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include <cstdio>
#include <memory>

using TestSupport::ScratchHome;

namespace {

// One interface as its XML describes it: "method Name (in-sig)(out-sig)",
// "property Name type access", "signal Name (sig)", sorted.
QStringList membersOf(const QString &xml, const QString &interface)
{
    QStringList members;
    QXmlStreamReader reader(xml);
    bool inside = false;
    QString current;
    QString in;
    QString out;
    while (!reader.atEnd()) {
        reader.readNext();
        const QStringView name = reader.name();
        const QXmlStreamAttributes a = reader.attributes();
        if (reader.isStartElement() && name == u"interface") {
            inside = a.value(QLatin1String("name")) == interface;
        } else if (reader.isEndElement() && name == u"interface") {
            inside = false;
        } else if (!inside) {
            continue;
        } else if (reader.isStartElement() && (name == u"method" || name == u"signal")) {
            current = name.toString() + u' ' + a.value(QLatin1String("name")).toString();
            in.clear();
            out.clear();
        } else if (reader.isStartElement() && name == u"arg") {
            (a.value(QLatin1String("direction")) == u"in" ? in : out) +=
                a.value(QLatin1String("type")).toString();
        } else if (reader.isEndElement() && (name == u"method" || name == u"signal")) {
            members.append(current + QStringLiteral(" (%1)(%2)").arg(in, out));
        } else if (reader.isStartElement() && name == u"property") {
            members.append(QStringLiteral("property %1 %2 %3")
                               .arg(a.value(QLatin1String("name")), a.value(QLatin1String("type")),
                                    a.value(QLatin1String("access"))));
        }
    }
    members.sort();
    return members;
}

QString fileText(const QString &name)
{
    QFile file(QStringLiteral(NARV_INTERFACES_DIR "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The D-Bus signature of a value as QtDBus hands it over.
QString signatureOf(const QVariant &value)
{
    if (value.canConvert<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature();
    if (value.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return QStringLiteral("o");
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
}

} // namespace

// The label signals a panel receives: the labels in order, and how many
// NewToolTip came with them.
class SignalRecorder : public QObject {
    Q_OBJECT
public:
    QStringList labels;
    int toolTips = 0;

public Q_SLOTS:
    void onMessage(const QDBusMessage &m)
    {
        if (m.member() == u"NewToolTip")
            ++toolTips;
        else
            labels.append(m.arguments().value(0).toString());
    }
};

class TestTrayInterfaces : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void introspectionIsTheInterfaceFile_data();
    void introspectionIsTheInterfaceFile();
    void everyPropertyHasItsDeclaredType_data();
    void everyPropertyHasItsDeclaredType();
    void propertiesAreReadOnlyAndUnknownNamesAreErrors();
    void menuTextDirectionIsTheLocales();
    void linksNoQtGui();
    void imagesWithoutQtGui();
    void textSignalsAreWhatLibdbusWrites_data();
    void textSignalsAreWhatLibdbusWrites();
    void textSignalsArriveInOrderThroughAFullSocket();
    void keptLabelFrameIsWrittenOver();
    void noWriteOnceTheBusHasGone();

private:
    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &args = {});

    std::optional<ScratchHome> m_home;
    std::unique_ptr<MainLoopBus> m_bus;
    QDBusConnection m_panel{QString()};
    QString m_service;
};

void TestTrayInterfaces::initTestCase()
{
    QVERIFY2(QDBusConnection::sessionBus().isConnected(), "run this under dbus-run-session");
    m_home.emplace();
    // No icon theme: every menu item then carries our own drawing.
    qputenv("XDG_DATA_HOME", (m_home->path() + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_DATA_DIRS", (m_home->path() + QStringLiteral("/system")).toUtf8());
    QString error;
    m_bus = MainLoopBus::connectToSessionBus(&error);
    QVERIFY2(m_bus, qPrintable(error));
    new DBusMenuExporter(m_bus.get(), m_bus.get());
    auto *item = new StatusNotifierItem(m_bus.get(), m_bus.get());
    QVERIFY(item->isExported());
    item->setLabel(QStringLiteral("24:59"));
    m_service = item->serviceName();
    m_panel = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panel"));
    QVERIFY(m_panel.isConnected());
    // The name belongs to the item's own connection, not to QtDBus's.
    QCOMPARE(m_panel.interface()->serviceOwner(m_service).value(), m_bus->uniqueName());
}

void TestTrayInterfaces::cleanupTestCase()
{
    m_bus.reset();
}

QDBusMessage TestTrayInterfaces::call(const QString &path, const QString &interface,
                                      const QString &method, const QVariantList &args)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, path, interface, method);
    message.setArguments(args);
    QDBusPendingCall pending = m_panel.asyncCall(message, 10000);
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 15000))
        qWarning() << "no answer to" << method;
    return pending.reply();
}

void TestTrayInterfaces::introspectionIsTheInterfaceFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("file");
    QTest::newRow("item") << "/StatusNotifierItem"
                          << "org.kde.StatusNotifierItem"
                          << "org.kde.StatusNotifierItem.xml";
    QTest::newRow("menu") << "/MenuBar"
                          << "com.canonical.dbusmenu"
                          << "com.canonical.dbusmenu.xml";
}

void TestTrayInterfaces::introspectionIsTheInterfaceFile()
{
    QFETCH(QString, path);
    QFETCH(QString, interface);
    QFETCH(QString, file);
    const QStringList declared = membersOf(fileText(file), interface);
    QVERIFY(declared.size() > 5);

    const QDBusMessage reply = call(path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                    QStringLiteral("Introspect"));
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    const QString xml = reply.arguments().value(0).toString();
    QCOMPARE(membersOf(xml, interface), declared);
    // And the standard interfaces a panel calls.
    QVERIFY(membersOf(xml, QStringLiteral("org.freedesktop.DBus.Properties"))
                .contains(QStringLiteral("method GetAll (s)(a{sv})")));
    QVERIFY(membersOf(xml, QStringLiteral("org.freedesktop.DBus.Introspectable"))
                .contains(QStringLiteral("method Introspect ()(s)")));
}

void TestTrayInterfaces::everyPropertyHasItsDeclaredType_data()
{
    introspectionIsTheInterfaceFile_data();
}

void TestTrayInterfaces::everyPropertyHasItsDeclaredType()
{
    QFETCH(QString, path);
    QFETCH(QString, interface);
    QFETCH(QString, file);
    const QDBusMessage all = call(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                  QStringLiteral("GetAll"), {interface});
    QCOMPARE(all.type(), QDBusMessage::ReplyMessage);
    QVariantMap values;
    all.arguments().value(0).value<QDBusArgument>() >> values;

    QStringList declaredNames;
    for (const QString &member : membersOf(fileText(file), interface)) {
        const QStringList parts = member.split(u' ');
        if (parts.value(0) != u"property")
            continue;
        const QString name = parts.value(1);
        const QString type = parts.value(2);
        declaredNames.append(name);
        QVERIFY2(values.contains(name), qPrintable(name + QStringLiteral(" missing from GetAll")));
        QCOMPARE(signatureOf(values.value(name)), type);

        const QDBusMessage one = call(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                      QStringLiteral("Get"), {interface, name});
        QCOMPARE(one.type(), QDBusMessage::ReplyMessage);
        QCOMPARE(signatureOf(one.arguments().value(0).value<QDBusVariant>().variant()), type);
    }
    QStringList served = values.keys();
    served.sort();
    declaredNames.sort();
    QCOMPARE(served, declaredNames);
}

void TestTrayInterfaces::propertiesAreReadOnlyAndUnknownNamesAreErrors()
{
    const QString props = QStringLiteral("org.freedesktop.DBus.Properties");
    const QString sni = QStringLiteral("org.kde.StatusNotifierItem");
    QDBusMessage reply = call(QStringLiteral("/StatusNotifierItem"), props, QStringLiteral("Set"),
                              {sni, QStringLiteral("XAyatanaLabel"),
                               QVariant::fromValue(QDBusVariant(QStringLiteral("00:00")))});
    QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.PropertyReadOnly"));
    QCOMPARE(call(QStringLiteral("/StatusNotifierItem"), props, QStringLiteral("Get"),
                  {sni, QStringLiteral("XAyatanaLabel")})
                 .arguments()
                 .value(0)
                 .value<QDBusVariant>()
                 .variant()
                 .toString(),
             QStringLiteral("24:59"));

    reply = call(QStringLiteral("/StatusNotifierItem"), props, QStringLiteral("Get"),
                 {sni, QStringLiteral("NoSuchProperty")});
    QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownProperty"));
    reply = call(QStringLiteral("/StatusNotifierItem"), props, QStringLiteral("GetAll"),
                 {QStringLiteral("org.example.Other")});
    QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownInterface"));
    reply = call(QStringLiteral("/MenuBar"), QStringLiteral("com.canonical.dbusmenu"),
                 QStringLiteral("NoSuchMethod"));
    QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    // The item's clicks are answered, and change nothing.
    reply = call(QStringLiteral("/StatusNotifierItem"), sni, QStringLiteral("Activate"), {10, 10});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
}

void TestTrayInterfaces::menuTextDirectionIsTheLocales()
{
    const auto direction = [this] {
        return call(QStringLiteral("/MenuBar"), QStringLiteral("org.freedesktop.DBus.Properties"),
                    QStringLiteral("Get"),
                    {QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("TextDirection")})
            .arguments()
            .value(0)
            .value<QDBusVariant>()
            .variant()
            .toString();
    };
    QCOMPARE(direction(), QStringLiteral("ltr"));
    // No translation of ours is right to left; a desktop in Hebrew still is.
    QLocale::setDefault(QLocale(QLocale::Hebrew, QLocale::Israel));
    QCOMPARE(direction(), QStringLiteral("rtl"));
    QLocale::setDefault(QLocale::c());
    QCOMPARE(direction(), QStringLiteral("ltr"));
}

void TestTrayInterfaces::linksNoQtGui()
{
    // What narv_tray links itself, as the build has it: the linker drops a
    // library nothing uses, so the process alone would not show a stray one.
    QStringList links = QString::fromUtf8(NARV_TRAY_LINKS).split(u' ', Qt::SkipEmptyParts);
    links.sort();
    QCOMPARE(links, (QStringList{QStringLiteral("PkgConfig::DBUS1"), QStringLiteral("Qt6::Core"),
                                 QStringLiteral("Qt6::DBus"), QStringLiteral("narv_core")}));
    // And nothing the item and the menu did here loaded QtGui.
    QFile maps(QStringLiteral("/proc/self/maps"));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    QVERIFY2(!maps.readAll().contains("libQt6Gui"), "the status item brought QtGui along");
}

void TestTrayInterfaces::imagesWithoutQtGui()
{
    const QDBusMessage reply =
        call(QStringLiteral("/StatusNotifierItem"),
             QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
             {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("IconPixmap")});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    // (width, height, A R G B bytes) at each size; how they look is tst_trayimages' business.
    QList<int> sizes;
    for (const QVariant &image : plain(reply.arguments().value(0)).toList()) {
        const QVariantList fields = image.toList();
        const int w = fields.value(0).toInt();
        const QByteArray data = fields.value(2).toByteArray();
        QCOMPARE(fields.value(1).toInt(), w);
        QCOMPARE(data.size(), w * w * 4);
        int opaque = 0; // something drawn at every size
        for (int i = 0; i < data.size(); i += 4)
            opaque += quint8(data.at(i)) == 0xff;
        QVERIFY2(opaque > w, qPrintable(QString::number(w)));
        sizes.append(w);
    }
    QCOMPARE(sizes, (QList<int>{16, 22, 32, 48}));

    // Every item with a symbol has our 16 px PNG: no icon theme here.
    const QDBusMessage layout =
        call(QStringLiteral("/MenuBar"), QStringLiteral("com.canonical.dbusmenu"),
             QStringLiteral("GetLayout"), {0, -1, QStringList()});
    QCOMPARE(layout.type(), QDBusMessage::ReplyMessage);
    int icons = 0;
    for (const QVariant &child : plain(layout.arguments().value(1)).toList().value(2).toList()) {
        const QVariantMap p = child.toList().value(1).toMap();
        if (!p.contains(QStringLiteral("accessible-desc")))
            continue;
        const QByteArray png = p.value(QStringLiteral("icon-data")).toByteArray();
        const QString symbol = p.value(QStringLiteral("accessible-desc")).toString();
        QVERIFY2(png.startsWith("\x89PNG\r\n\x1a\n"), qPrintable(symbol));
        // IHDR, the first chunk: width and height, big-endian.
        QCOMPARE(png.mid(16, 8).toHex(), QByteArray("0000001000000010"));
        QVERIFY(!p.contains(QStringLiteral("icon-name")));
        ++icons;
    }
    // Settings, updates, feedback, About, Quit; start/stop has no symbol before the countdown runs.
    QCOMPARE(icons, 5);
}

namespace {
int busGoneChild(int argc, char **argv);
}

int main(int argc, char **argv)
{
    const int child = TestSupport::runChildMode(
        argc, argv, {{"bus-gone", [&] { return busGoneChild(argc, argv); }}});
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestTrayInterfaces test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_trayinterfaces.moc"

// The label and tooltip signals the item writes itself (MainLoopBus::
// sendTextSignals) against the same signals marshalled by libdbus: any slip
// in padding, lengths or field order would make the bus daemon drop the
// connection.
void TestTrayInterfaces::textSignalsAreWhatLibdbusWrites_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("the label and its guide")
        << QStringList{QStringLiteral("24:59"), QStringLiteral("00:00")};
    QTest::newRow("no arguments (NewToolTip)") << QStringList{};
    QTest::newRow("empty text") << QStringList{QString()};
    // Lengths 1 to 4 put the next length field on each of the four offsets.
    QTest::newRow("every padding") << QStringList{QStringLiteral("a"), QStringLiteral("ab"),
                                                  QStringLiteral("abc"), QStringLiteral("abcd")};
    QTest::newRow("hours, no separator") << QStringList{QStringLiteral("0102:05")};
    QTest::newRow("not ASCII") << QStringList{QStringLiteral("\u4f11\u606f 05:00 \u00e9")};
    // Longer than the buffer on the stack.
    QTest::newRow("long") << QStringList{QString(700, u'x'), QStringLiteral("y")};
}

void TestTrayInterfaces::textSignalsAreWhatLibdbusWrites()
{
    QFETCH(QStringList, texts);
    const QList<MainLoopBus::TextSignal> signalList{{"XAyatanaNewLabel", texts},
                                                    {"NewToolTip", {}}};
    const quint32 serial = 0x80000005u;
    const QByteArray ours = MainLoopBus::textSignalFrames(
        StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName, signalList, serial);

    QByteArray expected;
    quint32 next = serial;
    for (const MainLoopBus::TextSignal &s : signalList) {
        DBusMessage *m = dbus_message_new_signal(StatusNotifierItem::objectPath,
                                                 StatusNotifierItem::interfaceName, s.member);
        DBusMessageIter it;
        dbus_message_iter_init_append(m, &it);
        for (const QString &text : s.texts)
            DBusWrite::string(&it, text);
        dbus_message_set_serial(m, next++);
        char *bytes = nullptr;
        int length = 0;
        QVERIFY(dbus_message_marshal(m, &bytes, &length));
        expected.append(bytes, length);
        dbus_free(bytes);
        dbus_message_unref(m);
    }
    QCOMPARE(ours.toHex(' '), expected.toHex(' '));

    // And libdbus reads ours back as the same messages.
    const int first = dbus_message_demarshal_bytes_needed(ours.constData(), int(ours.size()));
    QVERIFY(first > 0 && first < ours.size());
    DBusError error;
    dbus_error_init(&error);
    DBusMessage *label = dbus_message_demarshal(ours.constData(), first, &error);
    QVERIFY2(label, error.message);
    DBusMessageIter args;
    dbus_message_iter_init(label, &args);
    QStringList read;
    while (dbus_message_iter_get_arg_type(&args) == DBUS_TYPE_STRING)
        read.append(DBusRead::next(&args).toString());
    QCOMPARE(read, texts);
    QCOMPARE(dbus_message_get_serial(label), serial);
    dbus_message_unref(label);
}

// Thousands of signals while the bus daemon is stopped, more than the socket
// holds: the first go out in our own writes, one is cut by the full socket
// or finds it full, the rest wait in libdbus's queue; once the daemon reads
// again a listener gets every one, in order, and the connection is alive.
void TestTrayInterfaces::textSignalsArriveInOrderThroughAFullSocket()
{
    QString error;
    std::unique_ptr<MainLoopBus> sender = MainLoopBus::connectToSessionBus(&error);
    QVERIFY2(sender, qPrintable(error));
    SignalRecorder log;
    QDBusConnection listener =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
    for (const QString &member : {QStringLiteral("XAyatanaNewLabel"), QStringLiteral("NewToolTip")})
        QVERIFY(listener.connect(sender->uniqueName(), QStringLiteral("/StatusNotifierItem"),
                                 QString::fromLatin1(StatusNotifierItem::interfaceName), member,
                                 &log, SLOT(onMessage(QDBusMessage))));
    // The match rules are in place once the bus has answered a call after them.
    QVERIFY(listener.interface()->isServiceRegistered(sender->uniqueName()).value());

    const QDBusReply<uint> daemon = listener.interface()->call(
        QStringLiteral("GetConnectionUnixProcessID"), QStringLiteral("org.freedesktop.DBus"));
    QVERIFY2(daemon.isValid(), qPrintable(daemon.error().message()));
    const pid_t daemonPid = pid_t(daemon.value());
    QCOMPARE(::kill(daemonPid, SIGSTOP), 0);
    // A write cut in the middle waits for the daemon: it goes on in a second.
    std::thread resume([daemonPid] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        ::kill(daemonPid, SIGCONT);
    });

    // Padding makes each pair about 1.2 KiB: 3000 of them fill any socket buffer.
    const QString padding(1000, u'.');
    QStringList sent;
    for (int i = 0; i < 3000; ++i) {
        const QString label = QString::number(i) + padding;
        sent.append(label);
        sender->sendTextSignals(
            StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
            {{"XAyatanaNewLabel", {label, QStringLiteral("00:00")}}, {"NewToolTip", {}}});
        if (i % 500 == 250) {
            // One through libdbus in the middle keeps its place.
            DBusMessage *m =
                dbus_message_new_signal(StatusNotifierItem::objectPath,
                                        StatusNotifierItem::interfaceName, "XAyatanaNewLabel");
            DBusMessageIter it;
            dbus_message_iter_init_append(m, &it);
            const QString via = QStringLiteral("libdbus %1").arg(i);
            DBusWrite::string(&it, via);
            sent.append(via);
            sender->send(m);
        }
    }
    resume.join();
    QTRY_COMPARE_WITH_TIMEOUT(log.labels.size(), sent.size(), 30000);
    QCOMPARE(log.labels, sent);
    QCOMPARE(log.toolTips, 3000);
    QVERIFY(listener.interface()->isServiceRegistered(sender->uniqueName()).value());

    // A message of libdbus's own cut off when the daemon stopped reading, and
    // the daemon reading again before the event loop has had a turn: the
    // socket takes bytes once more, but the label has to wait behind the rest
    // of that message, which only the write watch sends.
    log.labels.clear();
    QCOMPARE(::kill(daemonPid, SIGSTOP), 0);
    const QString big(1 << 20, u'x');
    DBusMessage *m = dbus_message_new_signal(
        StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName, "XAyatanaNewLabel");
    DBusMessageIter it;
    dbus_message_iter_init_append(m, &it);
    DBusWrite::string(&it, big);
    sender->send(m);
    QCOMPARE(::kill(daemonPid, SIGCONT), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    sender->sendTextSignal(StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
                           "XAyatanaNewLabel", {u"24:59", u"00:00"});
    QTRY_COMPARE_WITH_TIMEOUT(log.labels.size(), 2, 30000);
    QCOMPARE(log.labels.at(0), big);
    QCOMPARE(log.labels.at(1), u"24:59");
    QVERIFY(listener.interface()->isServiceRegistered(sender->uniqueName()).value());
}

// The label's frame kept from one second to the next and written over: a
// listener of libdbus's own reads every label with its guide, in order, each
// with a serial of its own, whether the frame was written over (same length),
// made anew (another length, after a text that is not ASCII) or left aside
// for libdbus (not ASCII), and with other messages in between.
void TestTrayInterfaces::keptLabelFrameIsWrittenOver()
{
    QString error;
    std::unique_ptr<MainLoopBus> sender = MainLoopBus::connectToSessionBus(&error);
    QVERIFY2(sender, qPrintable(error));
    DBusError dbusError;
    dbus_error_init(&dbusError);
    DBusConnection *listener = dbus_bus_get_private(DBUS_BUS_SESSION, &dbusError);
    QVERIFY2(listener, dbusError.message);
    const auto close = qScopeGuard([listener] {
        dbus_connection_close(listener);
        dbus_connection_unref(listener);
    });
    const QByteArray rule =
        "type='signal',path='/StatusNotifierItem',sender='" + sender->uniqueName().toUtf8() + "'";
    dbus_bus_add_match(listener, rule.constData(), &dbusError); // waits for the bus
    QVERIFY2(!dbus_error_is_set(&dbusError), dbusError.message);

    const QString other = QStringLiteral("\u4f11\u606f 05:00");
    const QStringList labels{QStringLiteral("25:00"),   QStringLiteral("24:59"),
                             QStringLiteral("24:58"),   QStringLiteral("0102:05"),
                             QStringLiteral("0102:04"), other,
                             QStringLiteral("24:57"),   QStringLiteral("24:56")};
    QStringList sent;
    for (const QString &label : labels) {
        sender->sendTextSignal(StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
                               "XAyatanaNewLabel", {label, StatusNotifierItem::labelGuide()});
        sent.append(label);
        if (label == u"24:58") {
            sender->sendTextSignals(StatusNotifierItem::objectPath,
                                    StatusNotifierItem::interfaceName, {{"NewToolTip", {}}});
            sent.append(QStringLiteral("(tooltip)"));
        } else if (label == u"0102:04") {
            DBusMessage *m =
                dbus_message_new_signal(StatusNotifierItem::objectPath,
                                        StatusNotifierItem::interfaceName, "XAyatanaNewLabel");
            DBusMessageIter it;
            dbus_message_iter_init_append(m, &it);
            DBusWrite::string(&it, QStringLiteral("libdbus"));
            DBusWrite::string(&it, StatusNotifierItem::labelGuide());
            sender->send(m);
            sent.append(QStringLiteral("libdbus"));
        }
    }
    // Three texts: the header fields end 1 past a multiple of 8, so the body
    // starts after padding that 4-alignment alone would get wrong.
    for (const QString &text : {QStringLiteral("one"), QStringLiteral("two")}) {
        sender->sendTextSignal(StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
                               "Three", {text, text, text});
        sent.append(text);
    }

    QStringList received;
    QList<quint32> serials;
    QDeadlineTimer deadline(10000);
    while (received.size() < sent.size() && !deadline.hasExpired()) {
        dbus_connection_read_write(listener, 100);
        while (DBusMessage *m = dbus_connection_pop_message(listener)) {
            if (dbus_message_get_path(m) &&
                qstrcmp(dbus_message_get_path(m), "/StatusNotifierItem") == 0) {
                serials.append(dbus_message_get_serial(m));
                if (dbus_message_is_signal(m, StatusNotifierItem::interfaceName, "NewToolTip")) {
                    received.append(QStringLiteral("(tooltip)"));
                } else if (dbus_message_is_signal(m, StatusNotifierItem::interfaceName, "Three")) {
                    DBusMessageIter args;
                    dbus_message_iter_init(m, &args);
                    const QString text = DBusRead::next(&args).toString();
                    QCOMPARE(DBusRead::next(&args).toString(), text);
                    QCOMPARE(DBusRead::next(&args).toString(), text);
                    received.append(text);
                } else {
                    DBusMessageIter args;
                    dbus_message_iter_init(m, &args);
                    const QString label = DBusRead::next(&args).toString();
                    QCOMPARE(DBusRead::next(&args).toString(), StatusNotifierItem::labelGuide());
                    received.append(label);
                }
            }
            dbus_message_unref(m);
        }
    }
    QCOMPARE(received, sent);
    QCOMPARE(QSet<quint32>(serials.cbegin(), serials.cend()).size(), serials.size());
    QVERIFY(dbus_connection_get_is_connected(listener));
    QVERIFY(sender->nameHasOwner(sender->uniqueName())); // the bus kept our connection
}

// The item writes on the bus socket itself. When the bus goes, libdbus closes
// that socket, and its number is soon some other file's: the item must not
// write there. A child on a bus of the test's own sends a label, the bus is
// stopped, another socket takes the old number, and the labels sent then must
// not reach it. (A child: libdbus keeps the first session bus address
// it was given for the life of the process.)
void TestTrayInterfaces::noWriteOnceTheBusHasGone()
{
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"),
                  QStringLiteral("--print-address")});
    QVERIFY(daemon.waitForReadyRead(5000));
    const QByteArray address = daemon.readLine().trimmed();
    const QByteArray sessionBus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    QTemporaryDir home;
    const auto child = TestSupport::runChild(QStringLiteral("bus-gone"), home.path(),
                                             {QString::number(daemon.processId())});
    qputenv("DBUS_SESSION_BUS_ADDRESS", sessionBus);
    QVERIFY2(child.exitCode == 0, child.err.constData());
    QVERIFY(daemon.waitForFinished(5000)); // the child stopped it
}

namespace {
QSet<int> openDescriptors()
{
    QSet<int> fds;
    for (const QString &name : QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files))
        fds.insert(name.toInt());
    return fds;
}

// Exits 0 when nothing reached the socket's number after the bus went.
int busGoneChild(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const auto fail = [](const char *what) {
        std::fprintf(stderr, "%s\n", what);
        return 1;
    };
    const QSet<int> before = openDescriptors();
    QString error;
    std::unique_ptr<MainLoopBus> sender = MainLoopBus::connectToSessionBus(&error);
    if (!sender)
        return fail("no bus");
    const QSet<int> added = openDescriptors() - before;
    if (added.size() != 1)
        return fail("not one new descriptor for the bus");
    const int socket = *added.cbegin();
    const auto label = [&](QStringView text) {
        sender->sendTextSignal(StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
                               "XAyatanaNewLabel", {text, u"00:00"});
        sender->sendTextSignals(StatusNotifierItem::objectPath, StatusNotifierItem::interfaceName,
                                {{"NewToolTip", {}}});
    };
    label(u"25:00");

    ::kill(pid_t(QByteArray(argv[3]).toLongLong()), SIGKILL);
    // libdbus reads the end of the stream from the event loop, and closes.
    QDeadlineTimer deadline(5000);
    while (openDescriptors().contains(socket) && !deadline.hasExpired())
        QTest::qWait(20);
    if (openDescriptors().contains(socket))
        return fail("libdbus kept the socket of a bus that has gone");
    // A socket pair, as another connection of the program's would be: both
    // ends above the old number, one of them also at it.
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends) != 0)
        return fail("no socket pair");
    const int readEnd = ::fcntl(ends[0], F_DUPFD_CLOEXEC, socket + 1);
    const int writeEnd = ::fcntl(ends[1], F_DUPFD_CLOEXEC, socket + 1);
    ::close(ends[0]);
    ::close(ends[1]);
    if (readEnd < 0 || writeEnd < 0 || ::dup2(writeEnd, socket) != socket)
        return fail("no socket at the old number");
    label(u"24:59");
    label(u"0102:05");
    char byte = 0;
    if (::read(readEnd, &byte, 1) != -1 || errno != EAGAIN)
        return fail("a label was written to what took the bus socket's number");
    return 0;
}
} // namespace
