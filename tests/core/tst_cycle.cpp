// The work/break cycle driven by stepped ticks: countdown, break rhythm, skip
// flag, prompts, pause, the work time changing mid-break, and the fatal stops.

#include "FakeStatusItem.h"
#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "AppDelegate.h"
#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"

#include <QSignalSpy>
#include <QTest>

using TestSupport::ScratchHome;

namespace {

// The test binary as a child: work runs out with settings, by mode, that end
// in a fatal stop (no work time but where the mode says otherwise).
int fatalChild(int argc, char **argv)
{
    installQtMessageRouting();
    QCoreApplication app(argc, argv);
    ScratchHome home;
    ManualTickSource ticks;
    TicktackController::setTimer(&ticks);
    PrefState *p = AppState::prefState();
    const QByteArray mode = argv[2];
    const qint64 huge = std::numeric_limits<qint64>::max();
    p->setWorkTime(mode == "work-time-overflow" ? huge / 2 : 0);
    p->setShortBreakTimes(mode == "short-breaks-zero" ? 0 : 1);
    p->setLongBreakTime(mode == "long-break-overflow" ? huge / 10 : 1);
    AppState::setWorking(true);
    StatusBarController::item();
    ticks.advance(1);
    return 0; // not reached when the stop works
}

} // namespace

class TestCycle : public QObject {
    Q_OBJECT

    ScratchHome m_home; // before anything reads the settings
    ManualTickSource m_ticks;
    FakeWindows *m_windows = nullptr;
    FakeStatusItem *m_status = nullptr;
    PrefState *pref() { return AppState::prefState(); }
    QString workLeft() { return AppState::workState()->timeString(); }

    PromptState *prompt() { return AppState::promptState(); }
    // Runs the current work period to its end, which starts a break.
    void finishWork() { m_ticks.advance(int(pref()->workTime() * 60)); }
    // Ends the running break the way the break screen does.
    void endBreak() { prompt()->closePrompt(); }

private Q_SLOTS:
    void initTestCase()
    {
        TicktackController::setTimer(&m_ticks);
        m_windows = &FakeWindows::install();
        FakeStatusItem::installFactory(&m_status);
        StatusBarController::item();
    }

    void init()
    {
        PreferencesStore::instance().clear();
        AppState::setManualPause(false);
        AppState::promptState()->resetShortBreakTimes();
        m_windows->calls.clear();
    }

    void timeStrings()
    {
        QCOMPARE(timeString(-5), QStringLiteral("00:00"));
        QCOMPARE(timeString(3599), QStringLiteral("59:59"));
        QCOMPARE(timeString(3600), QStringLiteral("0100:00")); // hours, with no separator
        QCOMPARE(timeString(3725), QStringLiteral("0102:05"));
        QCOMPARE(timeString(360000), QStringLiteral("10000:00"));
    }

    // Counts down to the tick that takes it to zero, fires once, and stays
    // at 00:00 (a countdown from zero or less: the fatal stops below).
    void countdownTicksAndFiresOnce()
    {
        TicktackState state;
        QSignalSpy up(&state, &TicktackState::timesUpChanged);
        TicktackController::ticktack(3, &state);
        QCOMPARE(state.timeString(), QStringLiteral("00:03")); // before the first tick
        m_ticks.advance(2);
        QCOMPARE(state.timesUp(), false);
        QCOMPARE(state.timeString(), QStringLiteral("00:01"));
        m_ticks.advance(1);
        QCOMPARE(state.timesUp(), true);
        m_ticks.advance(5);
        QCOMPARE(state.timeString(), QStringLiteral("00:00"));
        QCOMPARE(up.count(), 2); // the reset at start, then the expiry
        TicktackController::stop();
    }

    // Launching starts work; assigning working again restarts it in full.
    void launchStartsWorkAtOnce()
    {
        AppDelegate delegate;
        delegate.applicationDidFinishLaunching();
        QCOMPARE(m_status->title, QStringLiteral("25:00"));
        m_ticks.advance(61);
        AppState::setWorking(true);
        QCOMPARE(workLeft(), QStringLiteral("25:00"));
        AppState::setWorking(false);
        QVERIFY(!TicktackController::isRunning());
    }

    void breakRhythm_data()
    {
        QTest::addColumn<qint64>("every");
        QTest::addColumn<bool>("forceLongBreak");
        QTest::newRow("every break long") << qint64(1) << false;
        QTest::newRow("every second, forced") << qint64(2) << true;
        QTest::newRow("every fourth") << qint64(4) << false;
    }

    void breakRhythm()
    {
        QFETCH(qint64, every);
        QFETCH(bool, forceLongBreak);
        pref()->setShortBreakTimes(every);
        pref()->setForceLongBreak(forceLongBreak);
        pref()->setWorkTime(1);
        pref()->setBreakTime(20);
        pref()->setLongBreakTime(2);

        for (int n = 1; n <= 2 * every + 1; ++n) {
            finishWork();
            const bool longBreak = n % every == 0;
            QCOMPARE(m_windows->count("showBreak"), n);
            QCOMPARE(AppState::breakState()->timeString(), QString(longBreak ? "02:00" : "00:20"));
            QCOMPARE(prompt()->showSkipButton(), !(longBreak && forceLongBreak));
            QCOMPARE(m_status->title, QString()); // the title empties when work runs out
            // Skipped or finished, the break has already been counted.
            if (n % 2)
                m_ticks.advance(longBreak ? 120 : 20);
            QVERIFY(AppState::working());
            endBreak();
            QCOMPARE(m_windows->count("closeBreak"), n);
            QCOMPARE(workLeft(), QStringLiteral("01:00"));
        }
    }

    // Breaks draw, varied, from the style's built-in texts, not from the list
    // edited on the Style tab; a custom text replaces them.
    void promptsComeFromTheStyleOrTheCustomText()
    {
        pref()->setWorkTime(1);
        pref()->styleState()->setBreakStyle(BreakStyle::struggle);
        pref()->styleState()->setPromptList({QStringLiteral("never shown")});
        QSet<QString> seen;
        for (int n = 0; n < 40; ++n) {
            finishWork();
            seen.insert(prompt()->prompt());
            endBreak();
        }
        const QStringList texts = BreakStyles::prompts(BreakStyle::struggle);
        QVERIFY(QSet<QString>(texts.begin(), texts.end()).contains(seen));
        QVERIFY2(seen.size() > 3, "the prompt should vary from break to break");

        pref()->setCustomBreakPrompt(true);
        pref()->setBreakPrompt(QStringLiteral("Look out of the window"));
        finishWork();
        QCOMPARE(prompt()->prompt(), QStringLiteral("Look out of the window"));
    }

    void pauseDuringABreak()
    {
        pref()->setWorkTime(1);
        finishWork();
        m_ticks.advance(3);
        AppState::setManualPause(true);
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(m_windows->count("closeBreak"), 0); // the break windows stay, frozen

        endBreak(); // "Skip" while paused closes the windows and starts nothing
        QCOMPARE(m_windows->count("closeBreak"), 1);
        QVERIFY(!AppState::working());
        QVERIFY(!TicktackController::isRunning());

        AppState::setManualPause(false);
        QCOMPARE(workLeft(), QStringLiteral("01:00"));
    }

    // A new work time restarts work at once, also in the middle of a break;
    // while paused it waits for the resume.
    void workTimeChangeRestartsWorkUnlessPaused()
    {
        pref()->setWorkTime(1);
        pref()->setBreakTime(30);
        finishWork();
        m_ticks.advance(4);
        pref()->setWorkTime(2);
        QCOMPARE(workLeft(), QStringLiteral("02:00"));
        m_ticks.advance(10);
        // The break countdown was replaced; its windows stay with the time frozen.
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:26"));
        QCOMPARE(workLeft(), QStringLiteral("01:50"));
        QCOMPARE(m_windows->count("closeBreak"), 0);

        AppState::setManualPause(true);
        pref()->setWorkTime(10);
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(workLeft(), QStringLiteral("01:50"));
        AppState::setManualPause(false);
        QCOMPARE(workLeft(), QStringLiteral("10:00"));
    }

    void fatalStopsReachTheLog_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("no short breaks") << "short-breaks-zero" << QByteArray("Division by zero");
        QTest::newRow("long break") << "long-break-overflow" << QByteArray("Arithmetic overflow");
        QTest::newRow("work time") << "work-time-overflow" << QByteArray("Arithmetic overflow");
    }

    void fatalStopsReachTheLog()
    {
        QFETCH(QString, mode);
        QFETCH(QByteArray, message);
        const auto child = LogTail::runFatalChild(mode, m_home.path());
        QVERIFY(child.crashed);
        QVERIFY2(child.log.contains(" critical app.narv.Narv : ") && child.log.contains(message),
                 child.log.constData());
    }
};

int main(int argc, char **argv)
{
    const auto fatal = [&] { return fatalChild(argc, argv); };
    const int child = TestSupport::runChildMode(argc, argv,
                                                {{"short-breaks-zero", fatal},
                                                 {"long-break-overflow", fatal},
                                                 {"work-time-overflow", fatal}});
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestCycle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_cycle.moc"
