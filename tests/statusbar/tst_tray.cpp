// What panels rely on beyond the item's properties (e2e/bus_proxy.sh), read by a
// connection of the test's own on a private bus; and the classic tray icon's menu.

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
#include <QTest>

using StatusBarController::Tag;

// Where a panel calls: the item's and its menu's object path and interface.
using Target = std::pair<QString, QString>;
const Target item{QStringLiteral("/StatusNotifierItem"),
                  QStringLiteral("org.kde.StatusNotifierItem")};
const Target menu{QStringLiteral("/MenuBar"), QStringLiteral("com.canonical.dbusmenu")};

class TestTray : public QObject {
    Q_OBJECT
public Q_SLOTS:
    // Signals a panel listens to, as they arrive.
    void onMessage(const QDBusMessage &message) { m_received.insert(message.member(), message); }

private:
    QDBusMessage call(const Target &target, const char *method, const QVariantList &args = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(m_service, target.first,
                                                              target.second, QLatin1String(method));
        message.setArguments(args);
        // Asynchronous, with the event loop running: the item answers from this thread.
        QDBusPendingCall pending = m_panel.asyncCall(message, 10000);
        if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 15000))
            return QDBusMessage::createError(QDBusError::Timeout,
                                             QStringLiteral("no answer in 15 s"));
        return pending.reply();
    }
    // The root's children; a round trip, so the signals sent before it are in.
    QVariantList rows()
    {
        const QDBusMessage reply = call(menu, "GetLayout", {0, -1, QStringList()});
        m_revision = reply.arguments().value(0).toUInt();
        return plain(reply.arguments().value(1)).toList().value(2).toList();
    }
    auto received(const char *name) const { return m_received.values(QLatin1String(name)); }
    int pauseId() const { return StatusBarController::itemWithTag(Tag::pause)->id; }

    TestSupport::ScratchHome m_home;
    ManualTickSource m_ticks;
    QDateTime m_now = QDateTime::currentDateTime(); // a second on with each tick
    QDBusConnection m_panel =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panel"));
    FakeStatusNotifierWatcher m_watcher{m_panel};
    const QString m_service =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    QMultiHash<QString, QDBusMessage> m_received; // by member
    uint m_revision = 0;                          // the layout's, as GetLayout last said

private Q_SLOTS:
    void initTestCase()
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
        for (const char *signal :
             {"NewToolTip", "XAyatanaNewLabel", "ItemsPropertiesUpdated", "LayoutUpdated"})
            QVERIFY(m_panel.connect(m_service, QString(), QString(), QLatin1String(signal), this,
                                    SLOT(onMessage(QDBusMessage))));
        QTRY_COMPARE_WITH_TIMEOUT(m_watcher.registeredItems().size(), 1, 10000);
    }

    void layoutRevisionFollowsTheWaterItem()
    {
        const qsizetype withoutWater = rows().size();
        const uint before = m_revision;
        m_received.clear();
        StatusBarController::insetWaterItem();
        QCOMPARE(rows().size(), withoutWater + 1);
        QCOMPARE(m_revision, before + 1);
        QCOMPARE(received("LayoutUpdated").value(0).arguments(), (QVariantList{before + 1, 0}));
        StatusBarController::removeWaterItem();
        QCOMPARE(rows().size(), withoutWater);
        QCOMPARE(m_revision, before + 2);
        QCOMPARE(received("LayoutUpdated").size(), 2);
    }

    void clicks()
    {
        // Refused, so that hosts which ask for Activate first (Plasma) open the
        // menu; the activation token hosts offer first is taken.
        QCOMPARE(call(item, "Activate", {10, 10}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(call(item, "ProvideXdgActivationToken", {QStringLiteral("t")}).type(),
                 QDBusMessage::ReplyMessage);
        QCOMPARE(call(item, "ContextMenu", {10, 10}).type(), QDBusMessage::ReplyMessage);

        // A tick tells the new label, and the tooltip only when the break moves.
        rows(); // the news so far first
        m_received.clear();
        m_now = m_now.addSecs(1);
        m_ticks.advance();
        QTRY_COMPARE(received("XAyatanaNewLabel").size(), 1);
        rows();
        QVERIFY(received("NewToolTip").isEmpty());
        call(menu, "Event",
             {pauseId(), QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
        QTRY_VERIFY(AppState::manualPause());
        // The start/stop row's new label comes alone, without the whole layout.
        QTRY_COMPARE(received("NewToolTip").size(), 1);
        rows();
        QVERIFY(received("LayoutUpdated").isEmpty());
        const QList<QDBusMessage> updates = received("ItemsPropertiesUpdated");
        QCOMPARE(updates.size(), 1);
        const QVariantList row =
            plain(updates.first().arguments().value(0)).toList().value(0).toList();
        QCOMPARE(row.value(0).toInt(), pauseId());
        QCOMPARE(row.value(1).toMap().value(QStringLiteral("label")), QStringLiteral("- Work -"));

        // EventGroup answers with the ids it does not know and runs the others.
        const QDBusMessage reply =
            call(menu, "EventGroup",
                 {QVariant::fromValue(
                     DBusMenuEventList{{pauseId(), QStringLiteral("clicked"), QDBusVariant(0), 0},
                                       {4242, QStringLiteral("clicked"), QDBusVariant(0), 0}})});
        QCOMPARE(plain(reply.arguments().value(0)).toList(), QVariantList{4242});
        QTRY_VERIFY(!AppState::manualPause());
    }

    void classicTrayIconMenu()
    {
        TrayIconFallback fallback;
        const QList<QAction *> actions = fallback.menu()->actions();
        const QList<StatusBarController::MenuItem> &rows = StatusBarController::menu();
        QCOMPARE(actions.size(), rows.size());
        QAction *stop = nullptr;
        for (qsizetype i = 0; i < actions.size(); ++i) {
            QCOMPARE(actions[i]->isSeparator(), rows[i].separator);
            QCOMPARE(actions[i]->text(), rows[i].title);
            QVERIFY(rows[i].separator || actions[i]->isEnabled() == rows[i].isEnabled());
            if (rows[i].tag == int(Tag::pause))
                stop = actions[i];
        }
        stop->trigger();
        QVERIFY(AppState::manualPause());
        fallback.updateItem(pauseId());
        QCOMPARE(stop->text(), QStringLiteral("- Work -"));
        AppState::setManualPause(false);
    }
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tray.moc"
