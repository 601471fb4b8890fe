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
#include "app/Localized.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/PrefState.h"
#include "statusbar/StatusBarController.h"

#include <QApplication>
#include <QDBusPendingCall>
#include <QMenu>
#include <QScopeGuard>
#include <QTest>

using StatusBarController::Tag;
using TestSupport::ScratchHome;

namespace {

const QString sniInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");

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
    void cleanupTestCase() { m_watcher.reset(); }

    void registersWhenAWatcherAppears();
    void itemAsAPanelReadsIt();
    void labelFollowsTheCountdown();
    void layoutWithTheWaterItem();
    void clickingStartStopPauses();
    void classicTrayIconMenu();

private:
    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &args = {});
    QVariant property(const QString &name);
    QVariantList layout(uint *revision = nullptr);
    QVariantList children() { return layout().value(2).toList(); }

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    QDateTime m_now; // the clock, a second on with each tick
    QDBusConnection m_panel{QString()};
    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;
    QString m_service;
    SignalLog m_signals;
};

QDBusMessage TestTray::call(const QString &path, const QString &interface, const QString &method,
                            const QVariantList &args)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, path, interface, method);
    message.setArguments(args);
    // Asynchronous, with the event loop running: the item answers from this thread.
    QDBusPendingCall pending = m_panel.asyncCall(message, 10000);
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 15000))
        qWarning() << "no answer to" << method;
    return pending.reply();
}

QVariant TestTray::property(const QString &name)
{
    const QDBusMessage reply = call(itemPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {sniInterface, name});
    return reply.type() == QDBusMessage::ReplyMessage ? plain(reply.arguments().value(0))
                                                      : QVariant();
}

QVariantList TestTray::layout(uint *revision)
{
    const QDBusMessage reply =
        call(menuPath, menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"u(ia{sv}av)") {
        qWarning() << "GetLayout:" << reply.signature() << reply.errorMessage();
        return {};
    }
    if (revision)
        *revision = reply.arguments().value(0).toUInt();
    return plain(reply.arguments().value(1)).toList();
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
    for (const auto &[path, interface, member] :
         {std::tuple{itemPath, sniInterface, "XAyatanaNewLabel"},
          {itemPath, sniInterface, "NewToolTip"},
          {menuPath, menuInterface, "ItemsPropertiesUpdated"},
          {menuPath, menuInterface, "LayoutUpdated"}}) {
        QVERIFY(m_panel.connect(m_service, path, interface, QLatin1String(member), &m_signals,
                                SLOT(onMessage(QDBusMessage))));
    }
}

void TestTray::registersWhenAWatcherAppears()
{
    // Without a watcher and without a system tray (offscreen) the item says so.
    QTRY_COMPARE(LogTail::count("no StatusNotifierWatcher and no system tray"), 1);
    QVERIFY(m_watcher->registrations().isEmpty());

    QVERIFY(m_watcher->start());
    // Under the unique name of the connection that holds the item's name.
    const QString owner = m_panel.interface()->serviceOwner(m_service).value();
    const QString item = owner + itemPath;
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
    QCOMPARE(m_watcher->registeredItems(), QStringList{owner + u'@' + itemPath});
    QTRY_COMPARE(LogTail::count(listed), 2);
}

void TestTray::itemAsAPanelReadsIt()
{
    const QDBusMessage reply = call(itemPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("GetAll"), {sniInterface});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    const QVariantMap all = plain(reply.arguments().value(0)).toMap();
    QStringList values;
    for (const char *name :
         {"Id", "Category", "Status", "Title", "ItemIsMenu", "Menu", "XAyatanaLabelGuide"})
        values.append(all.value(QLatin1String(name)).toString());
    QCOMPARE(values, (QStringList{"app.narv.Narv", "ApplicationStatus", "Active", "Narv", "true",
                                  "/MenuBar", "00:00"}));

    // The emblem, (width, height, ARGB bytes) in each size the build drew, in
    // the emblem's blue wherever it is solid.
    QList<int> sizes;
    int solid = 0;
    for (const QVariant &image : all.value(QStringLiteral("IconPixmap")).toList()) {
        const QVariantList fields = image.toList();
        const int size = fields.value(0).toInt();
        sizes.append(size);
        const QByteArray argb = fields.value(2).toByteArray();
        QCOMPARE(argb.size(), size * size * 4);
        for (qsizetype i = 0; size == 32 && i < argb.size(); i += 4) {
            if (quint8(argb.at(i)) != 0xff)
                continue;
            ++solid;
            QCOMPARE(argb.mid(i + 1, 3), QByteArray("\x3d\x9b\xd6"));
        }
    }
    QCOMPARE(sizes, (QList<int>{16, 22, 32, 48}));
    QVERIFY(solid > 100);

    // The tooltip: (icon name, pixmaps, title, text), the text saying when
    // the break comes (tst_menu has the rules).
    const QVariantList toolTip = all.value(QStringLiteral("ToolTip")).toList();
    QCOMPARE(toolTip.size(), 4);
    QCOMPARE(toolTip.value(2).toString(), QStringLiteral("Narv"));
    QCOMPARE(toolTip.value(3).toString(), StatusBarController::toolTip());
    QVERIFY(toolTip.value(3).toString().startsWith(QLatin1String("Next break at ")));

    // A left click: refused, so that hosts which ask for Activate (Plasma)
    // open the menu; the activation token hosts offer first is taken.
    const auto click = [this](const char *method, const QVariantList &args) {
        return call(itemPath, sniInterface, QLatin1String(method), args).type();
    };
    QCOMPARE(click("Activate", {10, 10}), QDBusMessage::ErrorMessage);
    QCOMPARE(click("ProvideXdgActivationToken", {QStringLiteral("token")}),
             QDBusMessage::ReplyMessage);
    QCOMPARE(click("ContextMenu", {10, 10}), QDBusMessage::ReplyMessage);
}

void TestTray::labelFollowsTheCountdown()
{
    const auto toolTipText = [this] {
        return property(QStringLiteral("ToolTip")).toList().value(3).toString();
    };
    AppState::prefState()->setWorkTime(1);
    QTRY_COMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("01:00"));
    m_signals.received.clear();
    for (int i = 0; i < 2; ++i) {
        m_now = m_now.addSecs(1);
        m_ticks.advance();
    }
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("XAyatanaNewLabel")),
                 (QList<QVariantList>{{QStringLiteral("00:59"), QStringLiteral("00:00")},
                                      {QStringLiteral("00:58"), QStringLiteral("00:00")}}));

    // The ticks did not move the break, so panels were not told to read the
    // tooltip again; a pause is the first change, and the paused time its text.
    const auto unpause = qScopeGuard([] {
        AppState::setManualPause(false);
        AppState::prefState()->setWorkTime(25);
    });
    QVERIFY(m_signals.argumentsOf(QStringLiteral("NewToolTip")).isEmpty());
    AppState::setManualPause(true);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 1);
    QCOMPARE(toolTipText(), QStringLiteral("00:58"));
    AppState::setManualPause(false);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 2);
    QVERIFY(toolTipText().startsWith(QLatin1String("Next break at ")));
}

void TestTray::layoutWithTheWaterItem()
{
    float finished = 0.456f;
    bool inWorkTime = true;
    StatusBarController::setWaterSource(
        {[] { return false; }, [&] { return finished; }, [&] { return inWorkTime; }});
    uint before = 0;
    const QVariantList without = layout(&before);
    QCOMPARE(without.value(0).toInt(), 0);
    QCOMPARE(propsOf(without).value(QStringLiteral("children-display")).toString(),
             QStringLiteral("submenu"));
    QCOMPARE(without.value(2).toList().size(), 9);
    m_signals.received.clear();

    // Inserted twice, there once, and panels told once to read the layout again.
    StatusBarController::insetWaterItem();
    StatusBarController::insetWaterItem();
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")),
                 QList<QVariantList>{(QVariantList{before + 1, 0})});
    uint revision = 0;
    const QVariantList items = layout(&revision).value(2).toList();
    QCOMPARE(revision, before + 1);

    // One line per item: label|enabled|shortcut|tag|icon, "-" for a separator.
    QStringList lines;
    QSet<int> ids;
    for (const QVariant &child : items) {
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
        // Themed icons by name; our own drawings (the drop: no theme has one)
        // as icon data.
        const QString icon = p.contains(QStringLiteral("icon-data"))   ? QStringLiteral("data ")
                             : p.contains(QStringLiteral("icon-name")) ? QString()
                                                                       : QStringLiteral("no icon");
        lines.append(QStringLiteral("%1|%2|%3|%4|%5")
                         .arg(p.value(QStringLiteral("label")).toString(),
                              p.value(QStringLiteral("enabled")).toBool() ? "on" : "off",
                              keys.join(u' '), p.value(QStringLiteral("x-narv-tag")).toString(),
                              icon == u"no icon"
                                  ? icon
                                  : icon + p.value(QStringLiteral("accessible-desc")).toString()));
    }
    QCOMPARE(lines, (QStringList{
                        QStringLiteral("    Narv - v0.1.0(1)|off|||no icon"),
                        QStringLiteral("-"),
                        QStringLiteral("- Stop -|on|Control+p|2|stop.circle"),
                        QStringLiteral("Water (45% )|on|Control+r|3|data drop.triangle"),
                        QStringLiteral("Settings...|on|Control+comma||gearshape.circle"),
                        QStringLiteral("-"),
                        QStringLiteral("Check for Updates...|on|||arrow.counterclockwise.icloud"),
                        QStringLiteral("Feedback...|on|||mail.stack"),
                        QStringLiteral("About...|on|||info.circle"),
                        QStringLiteral("Quit|on|Control+q||escape"),
                    }));
    QCOMPARE(ids.size(), 10);
    QVERIFY(!ids.contains(0));

    // A new title is sent as the item's properties alone; panels ask for
    // some properties of some items to refresh.
    const int waterId = items.value(3).toList().value(0).toInt();
    inWorkTime = false;
    StatusBarController::updateWaterItem();
    QTRY_VERIFY(!m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).isEmpty());
    const QVariantList changed =
        m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).last().value(0).toList();
    QCOMPARE(changed.value(0).toList().value(0).toInt(), waterId);
    const QDBusMessage group = call(
        menuPath, menuInterface, QStringLiteral("GetGroupProperties"),
        {QVariant::fromValue(QList<int>{waterId, 4242}), QStringList{QStringLiteral("label")}});
    QCOMPARE(group.signature(), QStringLiteral("a(ia{sv})"));
    QCOMPARE(plain(group.arguments().value(0)).toList(),
             (QVariantList{QVariantList{
                 waterId, QVariantMap{{QStringLiteral("label"),
                                       QStringLiteral("Water (45% Out of hours)")}}}}));
    QCOMPARE(call(menuPath, menuInterface, QStringLiteral("AboutToShow"), {0}).arguments().value(0),
             QVariant(false));

    StatusBarController::removeWaterItem();
    StatusBarController::removeWaterItem();
    QCOMPARE(layout(&revision).value(2).toList().size(), 9);
    QCOMPARE(revision, before + 2);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).size(), 2);
}

void TestTray::clickingStartStopPauses()
{
    const int pauseId = children().value(2).toList().value(0).toInt();
    m_signals.received.clear();

    call(menuPath, menuInterface, QStringLiteral("Event"),
         {pauseId, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
    QTRY_VERIFY(AppState::manualPause());
    QVERIFY(!TicktackController::isRunning());
    // The panel is told the new label without asking for the whole layout.
    QTRY_VERIFY(!m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).isEmpty());
    const QVariantList changed =
        m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated")).last().value(0).toList();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().toList().value(0).toInt(), pauseId);
    QCOMPARE(propsOf(changed.first()).value(QStringLiteral("label")).toString(),
             QStringLiteral("- Work -")); // "Wrok" in the tables
    QCOMPARE(propsOf(children().value(2)).value(QStringLiteral("accessible-desc")).toString(),
             QStringLiteral("play.circle"));

    // Through EventGroup this time, with an id that does not exist alongside.
    const QDBusMessage reply = call(menuPath, menuInterface, QStringLiteral("EventGroup"),
                                    {QVariant::fromValue(DBusMenuEventList{
                                        {pauseId, QStringLiteral("clicked"), QDBusVariant(0), 0},
                                        {4242, QStringLiteral("clicked"), QDBusVariant(0), 0}})});
    QCOMPARE(plain(reply.arguments().value(0)).toList(), QVariantList{4242});
    QTRY_VERIFY(!AppState::manualPause());
    QCOMPARE(propsOf(children().value(2)).value(QStringLiteral("label")).toString(),
             QStringLiteral("- Stop -"));
    QCOMPARE(property(QStringLiteral("XAyatanaLabel")).toString(), QStringLiteral("25:00"));
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
    actions.at(2)->trigger();
    QVERIFY(AppState::manualPause());
    fallback.updateItem(StatusBarController::itemWithTag(Tag::pause)->id);
    QCOMPARE(actions.at(2)->text(), QStringLiteral("- Work -"));
    AppState::setManualPause(false);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tray.moc"
