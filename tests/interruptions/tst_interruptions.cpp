// The gentler interruptions on stepped time: choices out of range, postponing
// (its limit, what may not wait, the break count), skipping from the heads-up,
// pausing for a while until the pause ends by itself, and a break owed while
// the user is busy.

#include "LogTail.h"

#include "app/AppState.h"
#include "app/BreakDeferral.h"
#include "app/Clock.h"
#include "app/PauseFor.h"
#include "app/SystemEventController.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "services/BusySource.h"
#include "settings/PrefInterruptState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"

#include <QTest>

namespace {
struct Busy : BusySource {
    QString reason;
    QString busyReason() override { return reason; }
};
} // namespace

class TestInterruptions : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;
    ManualTickSource m_ticks;
    Busy *m_busy = nullptr;
    QDateTime m_now{QDate(2026, 3, 2), QTime(14, 5)};
    qint64 m_monotonic = 0;

    static PrefInterruptState *prefs() { return PrefInterruptState::instance(); }
    static PromptState *prompt() { return AppState::promptState(); }
    static qint64 left(TicktackState *state) { return TicktackController::remaining(state); }
    static bool inBreak() { return left(AppState::breakState()) >= 0; }
    // Runs the work countdown to its end (the break starts, or is owed).
    void finishWork() { m_ticks.advance(int(left(AppState::workState()))); }
    static int menuId(const QString &title)
    {
        for (const auto &item : StatusBarController::menu())
            if (item.title == title)
                return item.id;
        return 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        Clock::setNowSource([this] { return m_now; });
        Clock::setMonotonicSource([this] { return m_monotonic; });
        TicktackController::setTimer(&m_ticks);
        auto busy = std::make_unique<Busy>();
        m_busy = busy.get();
        BreakDeferral::addSource(std::move(busy));
        AppState::prefState()->setShortBreakTimes(3);
        AppState::prefState()->setWorkTime(1);
        StatusBarController::item();
    }

    // A full work period, which also starts the postpones in a row afresh.
    void init() { AppState::setManualPause(false); }

    void choicesOutOfRangeReadAsOff()
    {
        PreferencesStore &store = PreferencesStore::instance();
        store.setInt(Settings::key(Setting::headsUpSeconds), 45);
        store.setInt(Settings::key(Setting::postponeMinutes), -5);
        store.setInt(Settings::key(Setting::postponeLimit), 9);
        QCOMPARE(prefs()->headsUpSeconds(), 0);
        QCOMPARE(prefs()->postponeMinutes(), 0);
        QCOMPARE(prefs()->postponeLimit(), 0);
        QVERIFY(LogTail::count(
                    "\"pref.postpone.limit\" holds 9, not one of 1, 2, 3; reading it as off") > 0);
        prefs()->setPostponeMinutes(5);
        prefs()->setPostponeLimit(2);
    }

    // The break goes and comes back five minutes later as the same kind of
    // break, twice in a row at most; a forced long break cannot wait.
    void postponeAndSkipComing()
    {
        prompt()->resetShortBreakTimes();
        finishWork();
        QVERIFY(inBreak() && prompt()->showPostponeButton());
        for (int i = 1; i <= 2; ++i) {
            prompt()->postpone();
            QCOMPARE(left(AppState::workState()), 300);
            QCOMPARE(prompt()->shortBreakTimes(), 0);
            finishWork();
            QCOMPARE(prompt()->shortBreakTimes(), 1);
        }
        QVERIFY(inBreak() && !prompt()->showPostponeButton());
        prompt()->postpone();
        QVERIFY(inBreak());

        // Taken, the next one may wait again; before it starts, it moves.
        prompt()->closePrompt();
        prompt()->postpone();
        QCOMPARE(left(AppState::workState()), 360);
        finishWork();
        QCOMPARE(prompt()->shortBreakTimes(), 2);
        prompt()->closePrompt();

        // The third is long; forced, it has neither Skip nor Postpone.
        AppState::prefState()->setForceLongBreak(true);
        QVERIFY(!prompt()->canSkipComing() && !prompt()->canPostpone());
        finishWork();
        QVERIFY(inBreak() && !prompt()->showSkipButton() && !prompt()->showPostponeButton());
        prompt()->postpone();
        QVERIFY(inBreak());
        AppState::prefState()->setForceLongBreak(false);
        prompt()->closePrompt();

        // Skipped from the heads-up, the coming break counts; work starts afresh.
        m_ticks.advance(30);
        prompt()->skipComing();
        QCOMPARE(prompt()->shortBreakTimes(), 1);
        QCOMPARE(left(AppState::workState()), 60);
    }

    void pauseForEndsByItself()
    {
        QVERIFY(!menuId(QStringLiteral("Pause for 30 minutes")));
        prefs()->setPauseForEnable(true);
        StatusBarController::activate(menuId(QStringLiteral("Pause for 30 minutes")));
        QCOMPARE(StatusBarController::title(), QStringLiteral("until 14:35"));

        m_now = m_now.addSecs(29 * 60);
        PauseFor::checkEnd();
        QVERIFY(AppState::manualPause());
        m_now = m_now.addSecs(60);
        PauseFor::checkEnd();
        QVERIFY(!AppState::manualPause());
        QCOMPARE(left(AppState::workState()), 60);

        // Until tomorrow, over a night in suspend: the timer stood still, the
        // unlock in the morning ends the pause.
        StatusBarController::activate(menuId(QStringLiteral("Pause until tomorrow")));
        QCOMPARE(PauseFor::until(), QDateTime(QDate(2026, 3, 3), QTime(0, 0)));
        m_now = m_now.addDays(1);
        SystemEventActions::didLockScreenDismiss();
        m_now = m_now.addDays(-1); // back to the day whose log the cases read
        QVERIFY(!PauseFor::until().isValid() && !AppState::manualPause());

        // For an hour, ended by hand.
        StatusBarController::activate(menuId(QStringLiteral("Pause for 1 hour")));
        QCOMPARE(StatusBarController::title(), QStringLiteral("until 15:35"));
        AppState::setManualPause(false);
        QVERIFY(!PauseFor::until().isValid());
    }

    // Owed while busy, the break starts as the call ends, or 30 minutes late.
    void busyKeepsTheBreakOwed()
    {
        prefs()->setDeferWhenBusy(true);
        m_busy->reason = QStringLiteral("a call");
        finishWork();
        m_ticks.advance(10);
        QVERIFY(!inBreak());
        QCOMPARE(LogTail::count("the break waits: a call"), 1);
        m_busy->reason.clear();
        m_ticks.advance(1);
        QVERIFY(inBreak());
        prompt()->closePrompt();

        m_busy->reason = QStringLiteral("full screen");
        finishWork();
        m_monotonic += BreakDeferral::maxWaitSeconds * 1000;
        QVERIFY(!inBreak());
        m_ticks.advance(1);
        QVERIFY(inBreak());
        QCOMPARE(LogTail::count("the most it waits (full screen): it starts"), 1);
    }
};

QTEST_GUILESS_MAIN(TestInterruptions)
#include "tst_interruptions.moc"
