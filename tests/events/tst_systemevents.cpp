// The reactions to the machine with stepped time: the stop after five idle
// minutes and the restart by activity, breaks and pause, the setting switched
// off, screen lock and unlock under each setting with the new-day greeting and
// the break count reset, and the water reminder's part of an unlock.

#include "FakeWindows.h"
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

#include <QTest>

namespace {

// Stand-ins for the desktop (the real sources: tst_eventsources, e2e/events.sh).
// The input source offers nothing, as on a desktop where activity is not seen.
class FakeLockSource : public ScreenLockSource {
public:
    void start() override {}
};

class FakeInputSource : public InputActivitySource {
public:
    bool start() override { return false; }
};

} // namespace

class TestSystemEvents : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;
    ManualTickSource m_ticks;
    FakeWindows *m_windows = nullptr;
    qint64 m_monotonic = 1000000; // ms
    QDateTime m_now{QDate(2026, 3, 10), QTime(9, 0)};
    ScreenLockSource *m_lock = nullptr;
    InputActivitySource *m_input = nullptr;
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
        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
        StatusBarController::item(); // which starts the break as work runs out
        SystemEventController::setScreenLockSource(std::make_unique<FakeLockSource>());
        SystemEventController::setInputActivitySource(std::make_unique<FakeInputSource>());
        m_lock = SystemEventController::screenLockSource();
        m_input = SystemEventController::inputActivitySource();
        AppState::setWorking(true);
        SystemEventController::setup();
        // The first stop is armed although the input source offered nothing.
        QCOMPARE(AppState::mouseMoveEventItem()->remainingMs(), SystemEventController::idleDelayMs);
    }

    void init()
    {
        PreferencesStore::instance().clear();
        SystemEventController::setWaterUnlockHook({});
        AppState::mouseMoveEventItem()->cancel();
        AppState::setManualPause(false); // and work starts
        AppState::promptState()->resetShortBreakTimes();
        m_windows->calls.clear();
    }

    // The stop comes 300 s after the last activity; activity restarts only a
    // stopped cycle, with a full period, and never a pause.
    void idleStopAndRestart()
    {
        activity();
        pass(299);
        QVERIFY(AppState::working());
        pass(1);
        QVERIFY(!AppState::working());

        activity();
        pass(200);
        activity();
        pass(299);
        QVERIFY(AppState::working());
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("16:41")); // 25:00 less 499 s
        pass(1);
        QVERIFY(!AppState::working());

        AppState::setManualPause(true);
        activity();
        QVERIFY(!AppState::working());
    }

    // A break cancels the pending stop: the user is meant to leave the mouse
    // alone. Activity during it arms a new one, which outlasts a long break.
    void breakCancelsTheIdleStop()
    {
        pref()->setWorkTime(1);
        pref()->setBreakTime(900);
        activity();
        pass(460);
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("08:20"));
        activity();
        pass(300);
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("03:20"));
        QCOMPARE(m_windows->count("closeBreak"), 0); // the windows stay, frozen
    }

    // Switched off, activity neither arms a stop nor restarts work; switched
    // on again, the next activity counts at once.
    void settingOff()
    {
        pref()->setStopTimerAfterMouseStop(false);
        activity();
        pass(900);
        QVERIFY(AppState::working());
        AppState::setWorking(false);
        activity();
        QVERIFY(!AppState::working());

        pref()->setStopTimerAfterMouseStop(true);
        activity();
        QVERIFY(AppState::working());
        pass(300);
        QVERIFY(!AppState::working());
    }

    // A lock with a break on screen, time behind the lock screen, and the
    // unlock, under each setting. Only with the greeting on is the lock's
    // moment recorded, and the unlock then starts a new round of breaks; on a
    // new day (the calendar's, past midnight) it greets first, only once.
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
        pref()->setWorkTime(1);
        pass(60); // a break, counted and on screen at the lock
        m_now = QDateTime(QDate(2026, 3, 10), QTime(23, 59));
        PromptState *prompt = AppState::promptState();
        if (paused)
            AppState::setManualPause(true);

        Q_EMIT m_lock->locked();
        const double lockedAt = showNewDayTip ? double(m_now.toSecsSinceEpoch()) : 0.0;
        QCOMPARE(pref()->lastWeakupTimestamp(), lockedAt);
        const bool runsOn = !restartTimerAfterAwake && !paused;
        QCOMPARE(TicktackController::isRunning(), runsOn);
        QCOMPARE(m_windows->count("closeBreak"), restartTimerAfterAwake ? 1 : 0);
        pass(5);
        if (newDay)
            m_now = QDateTime(QDate(2026, 3, 11), QTime(0, 1));

        Q_EMIT m_lock->unlocked();
        const bool greeting = showNewDayTip && newDay;
        QCOMPARE(m_windows->count("showBreak"), greeting ? 2 : 1);
        if (greeting) {
            QCOMPARE(prompt->showSkipButton(), false);
            QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:10"));
            QVERIFY(BreakStyles::newDayPrompts(BreakStyle::default_).contains(prompt->prompt()));
        } else if (!paused && !runsOn) {
            QCOMPARE(AppState::workState()->timeString(), QStringLiteral("01:00"));
        }
        QCOMPARE(prompt->shortBreakTimes(), showNewDayTip ? 0 : 1);
        QCOMPARE(AppState::working(), !paused && !(greeting && restartTimerAfterAwake));
        Q_EMIT m_lock->locked();
        Q_EMIT m_lock->unlocked();
        QCOMPARE(m_windows->count("showBreak"), greeting ? 2 : 1);
    }

    // On the water reminder's new day (the greeting off) an unlock closes its
    // panel, resets the tally and schedules the next reminder.
    void waterResetOnUnlock_data()
    {
        QTest::addColumn<bool>("enable");
        QTest::addColumn<bool>("waterNewDay");
        QTest::newRow("on, new day") << true << true;
        QTest::newRow("on, same day") << true << false;
        QTest::newRow("off, new day") << false << true;
    }

    void waterResetOnUnlock()
    {
        QFETCH(bool, enable);
        QFETCH(bool, waterNewDay);
        QStringList steps;
        SystemEventController::setWaterUnlockHook({
            [&] { return enable; },
            [&] { return waterNewDay; },
            [&] { steps.append(QStringLiteral("reset")); },
            [&] { steps.append(QStringLiteral("schedule")); },
        });
        Q_EMIT m_lock->unlocked();
        const bool reset = enable && waterNewDay;
        QCOMPARE(steps, reset ? QStringList({"reset", "schedule"}) : QStringList());
        QCOMPARE(m_windows->count("closeWaterView"), reset ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(TestSystemEvents)
#include "tst_systemevents.moc"
