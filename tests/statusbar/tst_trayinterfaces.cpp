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
#include <QFile>
#include <QTest>
#include <QXmlStreamReader>

#include <dbus/dbus.h>
#include <signal.h>

#include <chrono>
#include <thread>

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

int main(int argc, char **argv)
{
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
}
