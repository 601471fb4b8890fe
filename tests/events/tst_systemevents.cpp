// The reactions to the machine with stepped time: the stop after five idle
// minutes, the restart by activity, pause, breaks, the setting switched off,
// screen lock and unlock under each setting, the new day across midnight, the
// break count reset and the water reminder's part of an unlock.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "app/SystemEventController.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using TestSupport::ScratchHome;

namespace {

// Stand-ins for the desktop: the real sources are tested on real buses and a
// real X server (tst_eventsources, e2e/events.sh).
class FakeLockSource : public ScreenLockSource {
public:
    void start() override { ++starts; }
    int starts = 0;
};

class FakeInputSource : public InputActivitySource {
public:
    bool start() override
    {
        ++starts;
        return false; // as if the desktop had nothing to offer
    }
    int starts = 0;
};

QDateTime localTime(int y, int m, int d, int h, int min)
{
    return QDateTime(QDate(y, m, d), QTime(h, min));
}

} // namespace

class TestSystemEvents : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    FakeWindows *m_windows = nullptr;
    qint64 m_monotonic = 1000000; // ms
    QDateTime m_now;
    FakeLockSource *m_lock = nullptr;
    FakeInputSource *m_input = nullptr;
    qint64 m_setupArmed = -1; // ms left on the idle stop right after setup()
    PrefState *pref() { return AppState::prefState(); }

    // Lets `seconds` pass one by one: the countdown ticks and the idle stop's
    // timer goes off when its deadline comes.
    void pass(int seconds)
    {
        for (int i = 0; i < seconds; ++i) {
            m_monotonic += 1000;
            m_now = m_now.addSecs(1);
            m_ticks.advance(1);
            if (DelayedTask *idle = AppState::mouseMoveEventItem())
                idle->checkDeadline();
        }
    }
    void activity() { Q_EMIT m_input->activity(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        Clock::setMonotonicSource([this] { return m_monotonic; });
        Clock::setNowSource([this] { return m_now; });
        m_now = localTime(2026, 3, 10, 9, 0);
        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
        StatusBarController::item();

        auto lock = std::make_unique<FakeLockSource>();
        auto input = std::make_unique<FakeInputSource>();
        m_lock = lock.get();
        m_input = input.get();
        SystemEventController::setScreenLockSource(std::move(lock));
        SystemEventController::setInputActivitySource(std::move(input));
        AppState::setWorking(true);
        SystemEventController::setup();
        DelayedTask *idle = AppState::mouseMoveEventItem();
        m_setupArmed = idle ? idle->remainingMs() : -1;
    }

    void cleanupTestCase()
    {
        Clock::setMonotonicSource({});
        Clock::setNowSource({});
    }

    void init()
    {
        PreferencesStore::instance().clear();
        SystemEventController::setWaterUnlockHook({});
        if (DelayedTask *idle = AppState::mouseMoveEventItem())
            idle->cancel();
        AppState::setManualPause(false); // and work starts
        AppState::promptState()->resetShortBreakTimes();
        m_windows->calls.clear();
    }

    void setupStartsTheSourcesAndArmsTheFirstStop()
    {
        QCOMPARE(m_lock->starts, 1);
        QCOMPARE(m_input->starts, 1);
        // Armed although the input source offered nothing.
        QCOMPARE(m_setupArmed, SystemEventController::idleDelayMs);
        // The sources' signals reach the handlers.
        Q_EMIT m_lock->locked();
        QVERIFY(!AppState::working());
        Q_EMIT m_lock->unlocked();
        QVERIFY(AppState::working());
    }

    // The stop comes 300 s after the last activity; activity restarts a
    // stopped cycle with a full period, and only a stopped one.
    void idleStopAndRestart()
    {
        const QByteArray stop = "no mouse activity for 300 seconds, work stops\n";
        const QByteArray restart = "mouse activity, work starts again\n";
        const int stops = LogTail::count(stop);
        const int restarts = LogTail::count(restart);
        activity();
        pass(299);
        QVERIFY(AppState::working());
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("20:01"));
        pass(1);
        QVERIFY(!AppState::working());
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Wrok -"));
        pass(600); // nothing moves while stopped
        QCOMPARE(LogTail::count(stop), stops + 1);

        activity();
        QVERIFY(AppState::working());
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("25:00"));
        QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Stop -"));
        for (int i = 0; i < 2; ++i) {
            pass(200);
            activity();
        }
        pass(299);
        QVERIFY(AppState::working());
        // One work period all along, never stopped and restarted.
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("13:21"));
        QCOMPARE(LogTail::count(restart), restarts + 1);
        pass(1);
        QVERIFY(!AppState::working());
    }

    void pausedActivityNeverRestarts()
    {
        AppState::setManualPause(true);
        activity();
        QVERIFY(!AppState::working());
        pass(300);
        QVERIFY(!AppState::working());
        activity();
        QVERIFY(!AppState::working());
        QVERIFY(!TicktackController::isRunning());
        AppState::setManualPause(false);
        QVERIFY(AppState::working());
    }

    void breakCancelsTheIdleStop()
    {
        pref()->setWorkTime(1);
        pref()->setBreakTime(900);
        activity();
        pass(60); // the work period ends, the break starts
        QCOMPARE(m_windows->count("showBreak"), 1);
        QVERIFY(!AppState::mouseMoveEventItem()->isPending());
        pass(400);
        QVERIFY(TicktackController::isRunning());
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("08:20"));

        // Activity during the break arms a new stop, which outlasts this long
        // break and stops its countdown.
        activity();
        pass(300);
        QVERIFY(!TicktackController::isRunning());
        QVERIFY(!AppState::working());
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("03:20"));
        QCOMPARE(m_windows->count("closeBreak"), 0); // the windows stay, frozen
    }

    void settingOffArmsNothingButAnArmedStopFiresOnce()
    {
        activity();
        pass(100);
        pref()->setStopTimerAfterMouseStop(false);
        activity(); // would move the deadline to 400 s if it counted
        pass(199);
        QVERIFY(AppState::working());
        pass(1);
        QVERIFY(!AppState::working());
        // Switched off, activity neither restarts nor arms anything.
        activity();
        QVERIFY(!AppState::working());
        QVERIFY(!AppState::mouseMoveEventItem()->isPending());
        AppState::setWorking(true);
        pass(900);
        QVERIFY(AppState::working());

        pref()->setStopTimerAfterMouseStop(true);
        activity();
        pass(300);
        QVERIFY(!AppState::working());
    }

    // A lock with a break on screen, time behind the lock screen, and the
    // unlock, under each setting. Only with the greeting on is the lock's
    // moment recorded, and the unlock then starts a new round of breaks; on a
    // new day it greets first.
    void lockAndUnlock_data()
    {
        QTest::addColumn<bool>("showNewDayTip");
        QTest::addColumn<bool>("restartTimerAfterAwake");
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("newDay");
        QTest::newRow("defaults") << false << true << false << false;
        QTest::newRow("keep running") << false << false << false << false;
        QTest::newRow("paused") << false << true << true << true;
        QTest::newRow("greeting on, same day") << true << true << false << false;
        QTest::newRow("greeting on, new day") << true << true << false << true;
        QTest::newRow("greeting on, new day, keep running") << true << false << false << true;
        QTest::newRow("greeting on, new day, paused") << true << true << true << true;
    }

    void lockAndUnlock()
    {
        QFETCH(bool, showNewDayTip);
        QFETCH(bool, restartTimerAfterAwake);
        QFETCH(bool, paused);
        QFETCH(bool, newDay);
        pref()->setShowNewDayTip(showNewDayTip);
        pref()->setRestartTimerAfterAwake(restartTimerAfterAwake);
        pref()->setLastWeakupTimestamp(1000.0);
        pref()->setWorkTime(1);
        pass(60); // a break, counted and on screen at the lock
        m_now = localTime(2026, 3, 10, 8, 0);
        PromptState *prompt = AppState::promptState();
        if (paused)
            AppState::setManualPause(true);

        Q_EMIT m_lock->locked();
        const double lockedAt = showNewDayTip ? double(m_now.toSecsSinceEpoch()) : 1000.0;
        QCOMPARE(pref()->lastWeakupTimestamp(), lockedAt);
        const bool runsOn = !restartTimerAfterAwake && !paused;
        QCOMPARE(TicktackController::isRunning(), runsOn);
        QCOMPARE(m_windows->count("closeBreak"), restartTimerAfterAwake ? 1 : 0);
        pass(5);
        m_now = newDay ? localTime(2026, 3, 11, 8, 0) : localTime(2026, 3, 10, 17, 0);

        Q_EMIT m_lock->unlocked();
        const bool greeting = showNewDayTip && newDay;
        QCOMPARE(m_windows->count("showBreak"), greeting ? 2 : 1);
        if (greeting) {
            QCOMPARE(prompt->showSkipButton(), false);
            QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:10"));
            QVERIFY(BreakStyles::newDayPrompts(BreakStyle::default_).contains(prompt->prompt()));
        } else if (runsOn) {
            QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("04:55"));
        } else if (!paused) {
            QCOMPARE(AppState::workState()->timeString(), QStringLiteral("01:00"));
        }
        QCOMPARE(prompt->shortBreakTimes(), showNewDayTip ? 0 : 1);
        QCOMPARE(AppState::working(), !paused && !(greeting && restartTimerAfterAwake));
        QCOMPARE(pref()->lastWeakupTimestamp(), lockedAt);
    }

    void newDayAcrossMidnight()
    {
        pref()->setShowNewDayTip(true);
        pref()->setRestartTimerAfterAwake(false);
        m_now = localTime(2026, 12, 31, 23, 59);
        Q_EMIT m_lock->locked();
        m_now = localTime(2026, 12, 31, 23, 59).addSecs(59);
        Q_EMIT m_lock->unlocked();
        QCOMPARE(m_windows->count("showBreak"), 0); // still the same day

        Q_EMIT m_lock->locked();
        pass(2); // midnight passes behind the lock screen
        QCOMPARE(m_now.date(), QDate(2027, 1, 1));
        Q_EMIT m_lock->unlocked();
        QCOMPARE(m_windows->count("showBreak"), 1);
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:10"));
        // The greeting's end starts work, even with restartTimerAfterAwake off.
        pass(10);
        QVERIFY(AppState::breakState()->timesUp());
        AppState::promptState()->closePrompt();
        QVERIFY(AppState::working());

        // Only the first unlock of the day greets.
        Q_EMIT m_lock->locked();
        Q_EMIT m_lock->unlocked();
        QCOMPARE(m_windows->count("showBreak"), 1);

        // A lock seen with the greeting off is not recorded: the next day's first
        // unlock compares with the last lock seen with it on.
        pref()->setShowNewDayTip(false);
        m_now = localTime(2027, 1, 2, 7, 0);
        Q_EMIT m_lock->locked();
        pref()->setShowNewDayTip(true);
        m_now = localTime(2027, 1, 2, 7, 30);
        Q_EMIT m_lock->unlocked();
        QCOMPARE(m_windows->count("showBreak"), 2);
    }

    void waterResetOnUnlock_data()
    {
        QTest::addColumn<bool>("enable");
        QTest::addColumn<bool>("waterNewDay");
        QTest::addColumn<bool>("showNewDayTip");
        QTest::addColumn<bool>("reset");
        QTest::newRow("on, new day") << true << true << false << true;
        QTest::newRow("on, same day") << true << false << false << false;
        QTest::newRow("off, new day") << false << true << false << false;
    }

    void waterResetOnUnlock()
    {
        QFETCH(bool, enable);
        QFETCH(bool, waterNewDay);
        QFETCH(bool, showNewDayTip);
        QFETCH(bool, reset);
        pref()->setShowNewDayTip(showNewDayTip);

        QStringList steps;
        m_windows->onCall = [&](const QString &call) {
            if (call == QLatin1String("closeWaterView"))
                steps.append(call);
        };
        SystemEventController::setWaterUnlockHook({
            [&] { return enable; },
            [&] { return waterNewDay; },
            [&] { steps.append(QStringLiteral("reset")); },
            [&] { steps.append(QStringLiteral("schedule")); },
        });
        Q_EMIT m_lock->unlocked();
        m_windows->onCall = {};
        QCOMPARE(steps, reset ? (QStringList{QStringLiteral("closeWaterView"),
                                             QStringLiteral("reset"), QStringLiteral("schedule")})
                              : QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSystemEvents)
#include "tst_systemevents.moc"
