// What panels rely on beyond the item's properties (e2e/bus_proxy.sh reads
// those): the clicks the item takes, the menu's revision and signals, EventGroup,
// when the tooltip is told again; read from a connection of the test's own on a
// private bus, generically (plain()). And the classic tray icon's menu.

#include "DBusPlain.h"
#include "FakeStatusNotifierWatcher.h"
#include "FakeWindows.h"
#include "TestSupport.h"

#include "DBusMenuExporter.h"
#include "TrayBackend.h"
#include "TrayIconFallback.h"
#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Localized.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "statusbar/StatusBarController.h"

#include <QApplication>
#include <QDBusPendingCall>
#include <QMenu>
#include <QTest>

using StatusBarController::Tag;

namespace {
const QString sniInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");

// Signals a panel listens to, as they arrive.
class SignalLog : public QObject {
    Q_OBJECT
public:
    QList<QDBusMessage> received;
    QList<QDBusMessage> of(const char *member) const
    {
        QList<QDBusMessage> result;
        std::copy_if(received.begin(), received.end(), std::back_inserter(result),
                     [&](const QDBusMessage &m) { return m.member() == QLatin1String(member); });
        return result;
    }
public Q_SLOTS:
    void onMessage(const QDBusMessage &message) { received.append(message); }
};
} // namespace

class TestTray : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void onlyTheMenuOpensOnAClick();
    void layoutRevisionFollowsTheWaterItem();
    void startStopRowOverTheMenu();
    void toolTipToldOnlyWhenTheBreakMoves();
    void classicTrayIconMenu();

private:
    QDBusMessage call(const QString &path, const QString &interface, const char *method,
                      const QVariantList &args = {})
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(m_service, path, interface, QLatin1String(method));
        message.setArguments(args);
        // Asynchronous, with the event loop running: the item answers from this thread.
        QDBusPendingCall pending = m_panel.asyncCall(message, 10000);
        QTest::qWaitFor([&] { return pending.isFinished(); }, 15000);
        return pending.reply();
    }
    // The root's children; a round trip, so the signals sent before it are in.
    QVariantList rows(uint *revision = nullptr)
    {
        const QDBusMessage reply =
            call(menuPath, menuInterface, "GetLayout", {0, -1, QStringList()});
        if (revision)
            *revision = reply.arguments().value(0).toUInt();
        return plain(reply.arguments().value(1)).toList().value(2).toList();
    }
    int pauseId() const { return StatusBarController::itemWithTag(Tag::pause)->id; }

    TestSupport::ScratchHome m_home;
    ManualTickSource m_ticks;
    QDateTime m_now = QDateTime::currentDateTime(); // a second on with each tick
    QDBusConnection m_panel =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panel"));
    FakeStatusNotifierWatcher m_watcher{m_panel};
    QString m_service;
    SignalLog m_signals;
};

void TestTray::initTestCase()
{
    loadTranslations(QLocale(QLocale::English));
    registerDBusTypes(); // the panel sends EventGroup with them
    QVERIFY2(m_watcher.start(), "run this under dbus-run-session");
    Clock::setNowSource([this] { return m_now; });
    TicktackController::setTimer(&m_ticks);
    FakeWindows::install();
    TrayBackend::install();
    AppState::setWorking(true);
    StatusBarController::item();
    m_service =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    for (const auto &[path, interface, member] :
         {std::tuple{itemPath, sniInterface, "NewToolTip"},
          {itemPath, sniInterface, "XAyatanaNewLabel"},
          {menuPath, menuInterface, "ItemsPropertiesUpdated"},
          {menuPath, menuInterface, "LayoutUpdated"}})
        QVERIFY(m_panel.connect(m_service, path, interface, QLatin1String(member), &m_signals,
                                SLOT(onMessage(QDBusMessage))));
    QTRY_COMPARE_WITH_TIMEOUT(m_watcher.registeredItems().size(), 1, 10000);
}

void TestTray::onlyTheMenuOpensOnAClick()
{
    // Refused, so that hosts which ask for Activate first (Plasma) open the
    // menu; the activation token hosts offer first is taken.
    QCOMPARE(call(itemPath, sniInterface, "Activate", {10, 10}).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(
        call(itemPath, sniInterface, "ProvideXdgActivationToken", {QStringLiteral("t")}).type(),
        QDBusMessage::ReplyMessage);
    QCOMPARE(call(itemPath, sniInterface, "ContextMenu", {10, 10}).type(),
             QDBusMessage::ReplyMessage);
}

void TestTray::layoutRevisionFollowsTheWaterItem()
{
    uint before = 0;
    uint revision = 0;
    const qsizetype withoutWater = rows(&before).size();
    m_signals.received.clear();
    // Inserted twice, there once: one new revision, and panels told once.
    StatusBarController::insetWaterItem();
    StatusBarController::insetWaterItem();
    QCOMPARE(rows(&revision).size(), withoutWater + 1);
    QCOMPARE(revision, before + 1);
    QTRY_COMPARE(m_signals.of("LayoutUpdated").size(), 1);
    QCOMPARE(m_signals.of("LayoutUpdated").first().arguments(), (QVariantList{before + 1, 0}));
    StatusBarController::removeWaterItem();
    StatusBarController::removeWaterItem();
    QCOMPARE(rows(&revision).size(), withoutWater);
    QCOMPARE(revision, before + 2);
    QTRY_COMPARE(m_signals.of("LayoutUpdated").size(), 2);
}

void TestTray::startStopRowOverTheMenu()
{
    m_signals.received.clear();
    call(menuPath, menuInterface, "Event",
         {pauseId(), QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
    QTRY_VERIFY(AppState::manualPause());
    // The row's new label comes alone, without the whole layout.
    rows();
    QVERIFY(m_signals.of("LayoutUpdated").isEmpty());
    const QList<QDBusMessage> updates = m_signals.of("ItemsPropertiesUpdated");
    QCOMPARE(updates.size(), 1);
    const QVariantList row = plain(updates.first().arguments().value(0)).toList().value(0).toList();
    QCOMPARE(row.value(0).toInt(), pauseId());
    QCOMPARE(row.value(1).toMap().value(QStringLiteral("label")), QStringLiteral("- Work -"));

    // EventGroup answers with the ids it does not know and runs the others.
    const QDBusMessage reply = call(menuPath, menuInterface, "EventGroup",
                                    {QVariant::fromValue(DBusMenuEventList{
                                        {pauseId(), QStringLiteral("clicked"), QDBusVariant(0), 0},
                                        {4242, QStringLiteral("clicked"), QDBusVariant(0), 0}})});
    QCOMPARE(plain(reply.arguments().value(0)).toList(), QVariantList{4242});
    QTRY_VERIFY(!AppState::manualPause());
}

void TestTray::toolTipToldOnlyWhenTheBreakMoves()
{
    rows(); // the restart's news first
    m_signals.received.clear();
    m_now = m_now.addSecs(1);
    m_ticks.advance();
    QTRY_COMPARE(m_signals.of("XAyatanaNewLabel").size(), 1);
    rows();
    QVERIFY(m_signals.of("NewToolTip").isEmpty());
    AppState::setManualPause(true);
    QTRY_COMPARE(m_signals.of("NewToolTip").size(), 1);
    AppState::setManualPause(false);
}

void TestTray::classicTrayIconMenu()
{
    TrayIconFallback fallback;
    const QList<QAction *> actions = fallback.menu()->actions();
    const QList<StatusBarController::MenuItem> &menu = StatusBarController::menu();
    QCOMPARE(actions.size(), menu.size());
    QAction *stop = nullptr;
    for (qsizetype i = 0; i < actions.size(); ++i) {
        QCOMPARE(actions[i]->isSeparator(), menu[i].separator);
        QCOMPARE(actions[i]->text(), menu[i].title);
        QVERIFY(menu[i].separator || actions[i]->isEnabled() == menu[i].isEnabled());
        if (menu[i].tag == int(Tag::pause))
            stop = actions[i];
    }
    stop->trigger();
    QVERIFY(AppState::manualPause());
    fallback.updateItem(pauseId());
    QCOMPARE(stop->text(), QStringLiteral("- Work -"));
    AppState::setManualPause(false);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tray.moc"
