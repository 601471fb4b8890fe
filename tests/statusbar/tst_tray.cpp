// What panels depend on from the status item beyond its properties
// (tests/e2e/bus_proxy.sh reads those from the real binary): which clicks the
// item takes, the menu's revision and its signals as the water item comes and
// goes and a row changes, EventGroup's answer, and when the tooltip is told
// again. Read from a connection of the test's own on a private session bus
// (the test runs under dbus-run-session), replies taken generically (plain()).
// And the classic tray icon's menu.

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
    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &args = {});
    // The root's children; with a round trip, so signals sent before have arrived.
    QVariantList rows(uint *revision = nullptr);
    int pauseId() const { return StatusBarController::itemWithTag(Tag::pause)->id; }

    std::optional<TestSupport::ScratchHome> m_home;
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

QVariantList TestTray::rows(uint *revision)
{
    const QDBusMessage reply =
        call(menuPath, menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (revision)
        *revision = reply.arguments().value(0).toUInt();
    return plain(reply.arguments().value(1)).toList().value(2).toList();
}

void TestTray::initTestCase()
{
    QVERIFY2(QDBusConnection::sessionBus().isConnected(), "run this under dbus-run-session");
    m_home.emplace();
    loadTranslations(QLocale(QLocale::English));
    m_panel = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panel"));
    registerDBusTypes(); // the panel sends EventGroup with them
    m_watcher = std::make_unique<FakeStatusNotifierWatcher>(m_panel);
    QVERIFY(m_watcher->start());

    m_now = QDateTime::currentDateTime();
    Clock::setNowSource([this] { return m_now; });
    TicktackController::setTimer(&m_ticks);
    FakeWindows::install();
    TrayBackend::install();
    AppState::setWorking(true);
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
    QTRY_COMPARE_WITH_TIMEOUT(m_watcher->registeredItems().size(), 1, 10000);
}

void TestTray::onlyTheMenuOpensOnAClick()
{
    // Refused, so that hosts which ask for Activate first (Plasma) open the
    // menu; the activation token hosts offer first is taken.
    const auto click = [this](const char *method, const QVariantList &args) {
        return call(itemPath, sniInterface, QLatin1String(method), args).type();
    };
    QCOMPARE(click("Activate", {10, 10}), QDBusMessage::ErrorMessage);
    QCOMPARE(click("ProvideXdgActivationToken", {QStringLiteral("token")}),
             QDBusMessage::ReplyMessage);
    QCOMPARE(click("ContextMenu", {10, 10}), QDBusMessage::ReplyMessage);
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
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")),
                 QList<QVariantList>{(QVariantList{before + 1, 0})});

    StatusBarController::removeWaterItem();
    StatusBarController::removeWaterItem();
    QCOMPARE(rows(&revision).size(), withoutWater);
    QCOMPARE(revision, before + 2);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).size(), 2);
}

void TestTray::startStopRowOverTheMenu()
{
    m_signals.received.clear();
    call(menuPath, menuInterface, QStringLiteral("Event"),
         {pauseId(), QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
    QTRY_VERIFY(AppState::manualPause());
    // The panel is told the row's new label without the whole layout.
    rows();
    QCOMPARE(m_signals.argumentsOf(QStringLiteral("LayoutUpdated")).size(), 0);
    const QList<QVariantList> updates =
        m_signals.argumentsOf(QStringLiteral("ItemsPropertiesUpdated"));
    QVERIFY(!updates.isEmpty());
    const QVariantList changed = updates.last().value(0).toList();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().toList().value(0).toInt(), pauseId());
    QCOMPARE(changed.first().toList().value(1).toMap().value(QStringLiteral("label")).toString(),
             QStringLiteral("- Work -"));

    // EventGroup answers with the ids it does not know and runs the others.
    const QDBusMessage reply = call(menuPath, menuInterface, QStringLiteral("EventGroup"),
                                    {QVariant::fromValue(DBusMenuEventList{
                                        {pauseId(), QStringLiteral("clicked"), QDBusVariant(0), 0},
                                        {4242, QStringLiteral("clicked"), QDBusVariant(0), 0}})});
    QCOMPARE(plain(reply.arguments().value(0)).toList(), QVariantList{4242});
    QTRY_VERIFY(!AppState::manualPause());
}

void TestTray::toolTipToldOnlyWhenTheBreakMoves()
{
    rows(); // the unpause's news in first
    m_signals.received.clear();
    for (int i = 0; i < 2; ++i) {
        m_now = m_now.addSecs(1);
        m_ticks.advance();
    }
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("XAyatanaNewLabel")).size(), 2);
    rows();
    QVERIFY(m_signals.argumentsOf(QStringLiteral("NewToolTip")).isEmpty());

    AppState::setManualPause(true);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 1);
    AppState::setManualPause(false);
    QTRY_COMPARE(m_signals.argumentsOf(QStringLiteral("NewToolTip")).size(), 2);
}

void TestTray::classicTrayIconMenu()
{
    TrayIconFallback fallback;
    const QList<QAction *> actions = fallback.menu()->actions();
    QStringList shown;
    QStringList model;
    for (QAction *action : actions)
        shown.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    for (const StatusBarController::MenuItem &item : StatusBarController::menu())
        model.append(item.separator ? QStringLiteral("-") : item.title);
    QCOMPARE(shown, model);

    const qsizetype stop = model.indexOf(StatusBarController::itemWithTag(Tag::pause)->title);
    actions.at(stop)->trigger();
    QVERIFY(AppState::manualPause());
    fallback.updateItem(pauseId());
    QCOMPARE(actions.at(stop)->text(), QStringLiteral("- Work -"));
    AppState::setManualPause(false);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tray.moc"
