// The status item read the way a panel reads it: over a private session bus
// (the test runs under dbus-run-session), from a connection of its own, with a
// StatusNotifierWatcher of the test's own. The item lives in this process with
// stepped ticks (tests/e2e/bus_proxy.sh reads the real binary's). The menu's
// rows are checked here, as panels get them; tst_menu has the model's rules.
//
// Replies are read generically (plain()), by their D-Bus signatures, not with
// the item's own marshalling code, so a marshalling slip shows up here.

#include "DBusPlain.h"
#include "FakeStatusNotifierWatcher.h"
#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "DBusMenuExporter.h"
#include "StatusNotifierItem.h"
#include "TrayBackend.h"
#include "TrayIconFallback.h"
#include "app/AppState.h"
#include "app/Clock.h"
#include "app/IconFont.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using StatusBarController::Tag;
using TestSupport::ScratchHome;

namespace {

const QString sniInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

// Signals a panel listens to, as they arrive.
class SignalLog : public QObject {
    Q_OBJECT
public:
    QList<QPair<QString, QVariantList>> received;

    QList<QVariantList> argumentsOf(const QString &member) const
    {
        QList<QVariantList> result;
        for (const auto &[name, args] : received) {
            if (name == member)
                result.append(args);
        }
        return result;
    }

public Q_SLOTS:
    void onMessage(const QDBusMessage &message)
    {
        QVariantList args;
        for (const QVariant &arg : message.arguments())
            args.append(plain(arg));
        received.append({message.member(), args});
    }
};

QVariantMap propsOf(const QVariant &layoutItem)
{
    return layoutItem.toList().value(1).toMap();
}

} // namespace

class TestTray : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void registersWhenAWatcherAppears();
    void itemAsAPanelReadsIt();
    void labelFollowsTheCountdown();
    void layoutInOrder();
    void clickingStartStopPauses();
    void waterItemComesAndGoes();
    void classicTrayIconMenu();

private:
    QDBusMessage call(const QString &service, const QString &path, const QString &interface,
                      const QString &method, const QVariantList &args = {});
    QVariant property(const QString &name);
    QVariantList layout(uint *revision = nullptr);
    QVariantList children() { return layout().value(2).toList(); }
    bool listen(const QString &service, const QString &path, const QString &interface,
                const QString &member, SignalLog *log);
    int indexOfLabel(const QVariantList &items, const QString &prefix);
    // Steps the countdown n seconds, the clock first, as it goes for real.
    void tick(int n)
    {
        for (int i = 0; i < n && m_ticks.isActive(); ++i) {
            m_now = m_now.addSecs(1);
            m_ticks.advance();
        }
    }

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    QDateTime m_now; // the clock, a second on with each tick
    QDBusConnection m_panel{QString()};
    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;
    QString m_service;
    SignalLog m_signals;
};

QDBusMessage TestTray::call(const QString &service, const QString &path, const QString &interface,
                            const QString &method, const QVariantList &args)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(args);
    // Asynchronous, with the event loop running: the item answers from this thread.
    QDBusPendingCall pending = m_panel.asyncCall(message, 10000);
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 15000))
        qWarning() << "no answer to" << method;
    return pending.reply();
}

QVariant TestTray::property(const QString &name)
{
    const QDBusMessage reply = call(m_service, QStringLiteral("/StatusNotifierItem"),
                                    QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {sniInterface, name});
    return reply.type() == QDBusMessage::ReplyMessage ? plain(reply.arguments().value(0))
                                                      : QVariant();
}

QVariantList TestTray::layout(uint *revision)
{
    const QDBusMessage reply = call(m_service, QStringLiteral("/MenuBar"), menuInterface,
                                    QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"u(ia{sv}av)") {
        qWarning() << "GetLayout:" << reply.signature() << reply.errorMessage();
        return {};
    }
    if (revision)
        *revision = reply.arguments().value(0).toUInt();
    return plain(reply.arguments().value(1)).toList();
}

bool TestTray::listen(const QString &service, const QString &path, const QString &interface,
                      const QString &member, SignalLog *log)
{
    return m_panel.connect(service, path, interface, member, log, SLOT(onMessage(QDBusMessage)));
}

int TestTray::indexOfLabel(const QVariantList &items, const QString &prefix)
{
    for (int i = 0; i < items.size(); ++i) {
        if (propsOf(items.at(i)).value(QStringLiteral("label")).toString().startsWith(prefix))
            return i;
    }
    return -1;
}

void TestTray::initTestCase()
{
    QVERIFY2(QDBusConnection::sessionBus().isConnected(), "run this under dbus-run-session");
    m_home.emplace();
    loadTranslations(QLocale(QLocale::English));
    m_panel = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panel"));
    registerDBusTypes(); // the panel sends EventGroup with them
    QVERIFY(m_panel.isConnected());
    m_watcher = std::make_unique<FakeStatusNotifierWatcher>(m_panel);

    // The clock goes on a second with each tick, as it does for real, so the
    // break the tooltip names stays where it is while the countdown runs.
    m_now = QDateTime::currentDateTime();
    Clock::setNowSource([this] { return m_now; });
    TicktackController::setTimer(&m_ticks);
    FakeWindows::install();
    TrayBackend::install();
    AppState::setWorking(true);
    // No watcher yet, as at a login where Narv starts before the panel.
    StatusBarController::item();
    m_service =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    QVERIFY(listen(m_service, QStringLiteral("/StatusNotifierItem"), sniInterface,
                   QStringLiteral("XAyatanaNewLabel"), &m_signals));
    QVERIFY(listen(m_service, QStringLiteral("/StatusNotifierItem"), sniInterface,
                   QStringLiteral("NewToolTip"), &m_signals));
    QVERIFY(listen(m_service, QStringLiteral("/MenuBar"), menuInterface,
                   QStringLiteral("ItemsPropertiesUpdated"), &m_signals));
    QVERIFY(listen(m_service, QStringLiteral("/MenuBar"), menuInterface,
                   QStringLiteral("LayoutUpdated"), &m_signals));
}

void TestTray::cleanupTestCase()
{
    m_watcher.reset();
}

void TestTray::registersWhenAWatcherAppears()
{
    // Without a watcher and without a system tray (offscreen) the item says so.
    QTRY_COMPARE(LogTail::count("no StatusNotifierWatcher and no system tray"), 1);
    QVERIFY(m_watcher->registrations().isEmpty());

    QVERIFY(m_watcher->start());
    // Under the unique name of the connection that holds the item's name.
    const QString owner = m_panel.interface()->serviceOwner(m_service).value();
    const QString item = owner + QStringLiteral("/StatusNotifierItem");
    QTRY_COMPARE_WITH_TIMEOUT(m_watcher->registrations(), QStringList{item}, 10000);
    QCOMPARE(m_watcher->lastSender(), owner);
    const QByteArray listed = "status item registered as " + owner.toUtf8();
    QTRY_COMPARE(LogTail::count(listed), 1);

    // A panel restart: the new watcher knows nothing, the item registers
    // again; this one, like GNOME's, drops the first registration and lists
    // items as "<bus name>@<path>": the item registers once more when it
    // does not see itself listed, and then knows itself in that form.
    m_watcher->stop();
    m_watcher->dropRegistrations(1);
    m_watcher->listLikeGnome();
    QVERIFY(m_watcher->start());
    QTRY_COMPARE_WITH_TIMEOUT(m_watcher->registrations(), (QStringList{item, item, item}), 10000);
    QCOMPARE(m_watcher->registeredItems(),
             QStringList{owner + QStringLiteral("@/StatusNotifierItem")});
    QTRY_COMPARE(LogTail::count(listed), 2);
}

void TestTray::itemAsAPanelReadsIt()
{
    const QDBusMessage reply = call(m_service, QStringLiteral("/StatusNotifierItem"),
                                    QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("GetAll"), {sniInterface});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    const QVariantMap all = plain(reply.arguments().value(0)).toMap();
    QCOMPARE(all.value(QStringLiteral("Id")).toString(), QStringLiteral("app.narv.Narv"));
    QCOMPARE(all.value(QStringLiteral("Category")).toString(), QStringLiteral("ApplicationStatus"));
    QCOMPARE(all.value(QStringLiteral("Status")).toString(), QStringLiteral("Active"));
    QCOMPARE(all.value(QStringLiteral("Title")).toString(), QStringLiteral("Narv"));
    QCOMPARE(all.value(QStringLiteral("ItemIsMenu")).toBool(), true);
    QCOMPARE(all.value(QStringLiteral("Menu")).toString(), QStringLiteral("/MenuBar"));
    QCOMPARE(all.value(QStringLiteral("XAyatanaLabelGuide")).toString(), QStringLiteral("00:00"));

    // The emblem, (width, height, ARGB bytes) in each size the build drew:
    // the icon font's glyph, in the emblem's blue wherever it is solid.
    QByteArray argb;
    QList<int> sizes;
    for (const QVariant &image : all.value(QStringLiteral("IconPixmap")).toList()) {
        sizes.append(image.toList().value(0).toInt());
        if (sizes.last() == 32)
            argb = image.toList().value(2).toByteArray();
    }
    QCOMPARE(sizes, (QList<int>{16, 22, 32, 48}));
    QCOMPARE(argb.size(), 32 * 32 * 4);
    const QImage glyph =
        IconFont::loadIcon(IconFont::narv, 32, Qt::black).convertToFormat(QImage::Format_ARGB32);
    long difference = 0;
    int solid = 0;
    for (int i = 0; i < 32 * 32; ++i) {
        const auto byte = [&](int k) { return quint8(argb.at(i * 4 + k)); };
        difference += qAbs(byte(0) - qAlpha(glyph.pixel(i % 32, i / 32)));
        if (byte(0) == 0xff) {
            ++solid;
            QCOMPARE(qRgb(byte(1), byte(2), byte(3)), qRgb(0x3d, 0x9b, 0xd6));
        }
    }
    QVERIFY(solid > 100);
    // The same outline, antialiased a little differently at the edges.
    QVERIFY2(difference / (32 * 32) < 8, qPrintable(QString::number(difference / (32 * 32))));

    // The tooltip: (icon name, pixmaps, title, text), the text saying when
    // the break comes (tst_menu has the rules).
    const QVariantList toolTip = all.value(QStringLiteral("ToolTip")).toList();
    QCOMPARE(toolTip.size(), 4);
    QCOMPARE(toolTip.value(2).toString(), QStringLiteral("Narv"));
    QCOMPARE(toolTip.value(3).toString(), StatusBarController::toolTip());
    QVERIFY(toolTip.value(3).toString().startsWith(QLatin1String("Next break at ")));

    // A left click: refused, so that hosts which ask for Activate (Plasma)
    // open the menu; the activation token hosts offer first is taken.
    const auto click = [this](const QString &method, const QVariantList &args) {
        return call(m_service, QStringLiteral("/StatusNotifierItem"), sniInterface, method, args)
            .type();
    };
    QCOMPARE(click(QStringLiteral("Activate"), {10, 10}), QDBusMessage::ErrorMessage);
    QCOMPARE(click(QStringLiteral("ProvideXdgActivationToken"), {QStringLiteral("token")}),
             QDBusMessage::ReplyMessage);
    QCOMPARE(click(QStringLiteral("ContextMenu"), {10, 10}), QDBusMessage::ReplyMessage);
}

void TestTray::labelFollowsTheCountdown()
{
    PrefState *pref = AppState::prefState();
    const auto toolTipText = [this] {
        return property(QStringLiteral("ToolTip")).toList().value(3).toString();
    };
    pref->setWorkTime(1);
    QTRY_COMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("01:00"));
    QVERIFY2(toolTipText().startsWith(QLatin1String("Next break at ")), qPrintable(toolTipText()));
    QCOMPARE(toolTipText(), StatusBarController::toolTip());
    m_signals.received.clear();
    tick(2);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("XAyatanaNewLabel")).size(), 2);
    QCOMPARE(m_signals.argumentsOf(QStringLiteral("XAyatanaNewLabel")),
             (QList<QVariantList>{{QStringLiteral("00:59"), QStringLiteral("00:00")},
                                  {QStringLiteral("00:58"), QStringLiteral("00:00")}}));
    QCOMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("00:58"));

    // The ticks did not move the break, so panels were not told to read the
    // tooltip again; a pause is the first change, and the paused time its text.
    const auto unpause = qScopeGuard([] { AppState::setManualPause(false); });
    AppState::setManualPause(true);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 1);
    QStringList order; // of the item's signals (the menu's start/stop item changes too)
    for (const auto &received : std::as_const(m_signals.received)) {
        if (received.first == u"XAyatanaNewLabel" || received.first == u"NewToolTip")
            order.append(received.first);
    }
    QCOMPARE(order,
             (QStringList{QStringLiteral("XAyatanaNewLabel"), QStringLiteral("XAyatanaNewLabel"),
                          QStringLiteral("NewToolTip")}));
    QCOMPARE(toolTipText(), QStringLiteral("00:58"));
    AppState::setManualPause(false);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 2);
    QVERIFY(toolTipText().startsWith(QLatin1String("Next break at ")));

    pref->setWorkTime(25);
    QCOMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("25:00"));
}

void TestTray::layoutInOrder()
{
    uint revision = 0;
    const QVariantList root = layout(&revision);
    QCOMPARE(root.value(0).toInt(), 0);
    QCOMPARE(propsOf(root).value(QStringLiteral("children-display")).toString(),
             QStringLiteral("submenu"));

    // One line per item: label|enabled|shortcut|tag|has an icon, "-" for a separator.
    QStringList lines;
    QSet<int> ids;
    for (const QVariant &child : root.value(2).toList()) {
        const QVariantMap p = propsOf(child);
        ids.insert(child.toList().value(0).toInt());
        QCOMPARE(child.toList().value(2).toList().size(), 0); // a flat menu
        if (p.value(QStringLiteral("type")).toString() == u"separator") {
            lines.append(QStringLiteral("-"));
            continue;
        }
        QStringList keys;
        for (const QVariant &combo : p.value(QStringLiteral("shortcut")).toList())
            keys.append(combo.toStringList().join(u'+'));
        const bool icon =
            p.contains(QStringLiteral("icon-name")) || p.contains(QStringLiteral("icon-data"));
        lines.append(QStringLiteral("%1|%2|%3|%4|%5")
                         .arg(p.value(QStringLiteral("label")).toString(),
                              p.value(QStringLiteral("enabled")).toBool() ? "on" : "off",
                              keys.join(u' '), p.value(QStringLiteral("x-narv-tag")).toString(),
                              icon ? p.value(QStringLiteral("accessible-desc")).toString()
                                   : QStringLiteral("no icon")));
    }
    QCOMPARE(lines, (QStringList{
                        QStringLiteral("    Narv - v0.1.0(1)|off|||no icon"),
                        QStringLiteral("-"),
                        QStringLiteral("- Stop -|on|Control+p|2|stop.circle"),
                        QStringLiteral("Settings...|on|Control+comma||gearshape.circle"),
                        QStringLiteral("-"),
                        QStringLiteral("Check for Updates...|on|||arrow.counterclockwise.icloud"),
                        QStringLiteral("Feedback...|on|||mail.stack"),
                        QStringLiteral("About...|on|||info.circle"),
                        QStringLiteral("Quit|on|Control+q||escape"),
                    }));
    QCOMPARE(ids.size(), 9);
    QVERIFY(!ids.contains(0));

    // Asking for some properties of some items, as panels do to refresh.
    const int quitId = root.value(2).toList().value(8).toList().value(0).toInt();
    const QDBusMessage group = call(
        m_service, QStringLiteral("/MenuBar"), menuInterface, QStringLiteral("GetGroupProperties"),
        {QVariant::fromValue(QList<int>{quitId, 4242}), QStringList{QStringLiteral("label")}});
    QCOMPARE(group.signature(), QStringLiteral("a(ia{sv})"));
    QCOMPARE(plain(group.arguments().value(0)).toList(),
             (QVariantList{QVariantList{
                 quitId, QVariantMap{{QStringLiteral("label"), QStringLiteral("Quit")}}}}));
    const QDBusMessage show = call(m_service, QStringLiteral("/MenuBar"), menuInterface,
                                   QStringLiteral("AboutToShow"), {0});
    QCOMPARE(show.arguments().value(0).toBool(), false);
}

void TestTray::clickingStartStopPauses()
{
    const QVariantList items = children();
    const int pauseId = items.value(2).toList().value(0).toInt();
    m_signals.received.clear();

    call(m_service, QStringLiteral("/MenuBar"), menuInterface, QStringLiteral("Event"),
         {pauseId, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
    QTRY_VERIFY(AppState::manualPause());
    QVERIFY(!TicktackController::isRunning());
    // The panel is told the new label without asking for the whole layout.
    QTRY_VERIFY(!m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).isEmpty());
    const QVariantList update =
        m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).last();
    const QVariantList changed = update.value(0).toList();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().toList().value(0).toInt(), pauseId);
    QCOMPARE(propsOf(changed.first()).value(QStringLiteral("label")).toString(),
             QStringLiteral("- Work -")); // "Wrok" in the tables
    QCOMPARE(propsOf(children().value(2)).value(QStringLiteral("accessible-desc")).toString(),
             QStringLiteral("play.circle"));

    // Through EventGroup this time, with an id that does not exist alongside.
    const QDBusMessage reply =
        call(m_service, QStringLiteral("/MenuBar"), menuInterface, QStringLiteral("EventGroup"),
             {QVariant::fromValue(
                 DBusMenuEventList{{pauseId, QStringLiteral("clicked"), QDBusVariant(0), 0},
                                   {4242, QStringLiteral("clicked"), QDBusVariant(0), 0}})});
    QCOMPARE(plain(reply.arguments().value(0)).toList(), QVariantList{4242});
    QTRY_VERIFY(!AppState::manualPause());
    QCOMPARE(propsOf(children().value(2)).value(QStringLiteral("label")).toString(),
             QStringLiteral("- Stop -"));
    QCOMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("25:00"));

    // Events other than clicks do nothing.
    call(m_service, QStringLiteral("/MenuBar"), menuInterface, QStringLiteral("Event"),
         {pauseId, QStringLiteral("hovered"), QVariant::fromValue(QDBusVariant(0)), 0u});
    QTest::qWait(50);
    QVERIFY(!AppState::manualPause());
}

void TestTray::waterItemComesAndGoes()
{
    float finished = 0.456f;
    bool inWorkTime = true;
    StatusBarController::setWaterSource(
        {[] { return false; }, [&] { return finished; }, [&] { return inWorkTime; }});
    uint before = 0;
    layout(&before);
    m_signals.received.clear();

    StatusBarController::insetWaterItem();
    StatusBarController::insetWaterItem();
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).size(), 1);
    QCOMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).first(),
             (QVariantList{before + 1, 0}));
    uint revision = 0;
    QVariantList items = layout(&revision).value(2).toList();
    QCOMPARE(revision, before + 1);
    QCOMPARE(items.size(), 10);
    const QVariantMap water = propsOf(items.value(3));
    QCOMPARE(water.value(QStringLiteral("label")).toString(), QStringLiteral("Water (45% )"));
    QCOMPARE(water.value(QStringLiteral("x-narv-tag")).toInt(), 3);
    QCOMPARE(water.value(QStringLiteral("shortcut")).toList().value(0).toStringList(),
             (QStringList{QStringLiteral("Control"), QStringLiteral("r")}));
    QVERIFY(water.contains(QStringLiteral("icon-data"))); // our own drop: no theme has one
    const int waterId = items.value(3).toList().value(0).toInt();

    inWorkTime = false;
    StatusBarController::updateWaterItem();
    QTRY_VERIFY(!m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).isEmpty());
    const QVariantList changed =
        m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).last().value(0).toList();
    QCOMPARE(changed.value(0).toList().value(0).toInt(), waterId);
    QCOMPARE(propsOf(changed.value(0)).value(QStringLiteral("label")).toString(),
             QStringLiteral("Water (45% Out of hours)"));

    StatusBarController::removeWaterItem();
    StatusBarController::removeWaterItem();
    items = layout(&revision).value(2).toList();
    QCOMPARE(revision, before + 2);
    QCOMPARE(items.size(), 9);
    QCOMPARE(indexOfLabel(items, QStringLiteral("Water")), -1);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).size(), 2);
}

void TestTray::classicTrayIconMenu()
{
    // The fallback's menu is the same model as a QMenu; its tooltip carries the time.
    TrayIconFallback fallback;
    fallback.setTitle(QStringLiteral("12:34"));
    QCOMPARE(fallback.toolTip(), QStringLiteral("Narv 12:34"));
    fallback.setTitle(QString());
    QCOMPARE(fallback.toolTip(), QStringLiteral("Narv"));

    // The model's items, the "Ctrl+" keys as QKeySequence spells them, icons
    // from the bundled drawings where the theme has none (offscreen: none).
    const QList<QAction *> actions = fallback.menu()->actions();
    QCOMPARE(actions.size(), StatusBarController::menu().size());
    QVERIFY(!actions.at(0)->isEnabled());
    QVERIFY(actions.at(1)->isSeparator());
    QCOMPARE(actions.at(3)->shortcut().toString(), QStringLiteral("Ctrl+,"));
    for (QAction *action : actions.mid(2))
        QVERIFY2(action->isSeparator() || !action->icon().isNull(), qPrintable(action->text()));
    fallback.menu()->actions().at(2)->trigger();
    QVERIFY(AppState::manualPause());
    fallback.updateItem(StatusBarController::itemWithTag(Tag::pause)->id);
    QCOMPARE(fallback.menu()->actions().at(2)->text(), QStringLiteral("- Work -"));
    AppState::setManualPause(false);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tray.moc"
