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

// What one break looked like when it started.
struct Break {
    QString length; // the break countdown's first text
    bool skip;
    QString prompt;
};

// Settings that end in a fatal stop once work runs out, by child mode, with
// what the log must say.
const std::map<std::string, std::pair<QByteArray, std::function<void(PrefState *)>>> fatalSetUps = {
    {"short-breaks-zero",
     {"Division by zero",
      [](PrefState *p) {
          p->setWorkTime(0);
          p->setShortBreakTimes(0);
      }}},
    {"long-break-overflow",
     {"Arithmetic overflow",
      [](PrefState *p) {
          p->setWorkTime(0);
          p->setShortBreakTimes(1);
          p->setLongBreakTime(std::numeric_limits<qint64>::max() / 10);
      }}},
    {"work-time-overflow",
     {"Arithmetic overflow",
      [](PrefState *p) { p->setWorkTime(std::numeric_limits<qint64>::max() / 2); }}},
};

} // namespace

class TestCycle : public QObject {
    Q_OBJECT

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    FakeWindows *m_windows = nullptr;
    FakeStatusItem *m_status = nullptr;
    PrefState *pref() { return AppState::prefState(); }
    QString workLeft() { return AppState::workState()->timeString(); }

    // Runs the current work period to its end; returns how the break started.
    Break finishWork()
    {
        m_ticks.advance(int(pref()->workTime() * 60));
        PromptState *prompt = AppState::promptState();
        return {AppState::breakState()->timeString(), prompt->showSkipButton(), prompt->prompt()};
    }
    // Ends the running break the way the break screen does.
    void endBreak() { AppState::promptState()->closePrompt(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
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

    void timeStringTable_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("negative") << qint64(-5) << QStringLiteral("00:00");
        QTest::newRow("just under an hour") << qint64(3599) << QStringLiteral("59:59");
        QTest::newRow("an hour, no separator") << qint64(3600) << QStringLiteral("0100:00");
        QTest::newRow("3725") << qint64(3725) << QStringLiteral("0102:05");
        QTest::newRow("100 hours") << qint64(360000) << QStringLiteral("10000:00");
    }

    void timeStringTable()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, text);
        QCOMPARE(timeString(seconds), text);
    }

    // Counts down to the tick that takes it to zero (the first tick when it
    // starts at or below zero), fires once, and keeps ticking at 00:00.
    void countdownTicksAndFiresOnce_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<int>("ticksToFire");
        QTest::newRow("3") << qint64(3) << 3;
        QTest::newRow("negative") << qint64(-3) << 1;
    }

    void countdownTicksAndFiresOnce()
    {
        QFETCH(qint64, seconds);
        QFETCH(int, ticksToFire);
        TicktackState state;
        QSignalSpy up(&state, &TicktackState::timesUpChanged);
        TicktackController::ticktack(seconds, &state);
        QCOMPARE(state.timeString(), timeString(seconds)); // before the first tick
        m_ticks.advance(ticksToFire - 1);
        QCOMPARE(state.timesUp(), false);
        QCOMPARE(state.timeString(), timeString(seconds - ticksToFire + 1));
        m_ticks.advance(1);
        QCOMPARE(state.timesUp(), true);
        QSignalSpy texts(&state, &TicktackState::timeStringChanged);
        m_ticks.advance(5);
        QCOMPARE(texts.count(), 5);
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
        QCOMPARE(m_status->pauseImage, QStringLiteral("stop.circle"));
        QCOMPARE(m_status->pauseTitle, QStringLiteral("- Stop -"));
        m_ticks.advance(61);
        QCOMPARE(m_status->title, QStringLiteral("23:59"));
        AppState::setWorking(true);
        QCOMPARE(workLeft(), QStringLiteral("25:00"));
        AppState::setWorking(false);
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Wrok -"));
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
            const Break b = finishWork();
            const bool longBreak = n % every == 0;
            QCOMPARE(m_windows->count("showBreak"), n);
            QCOMPARE(b.length, longBreak ? QStringLiteral("02:00") : QStringLiteral("00:20"));
            QCOMPARE(b.skip, !(longBreak && forceLongBreak));
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

    void promptsComeFromTheStyleOrTheCustomText()
    {
        pref()->setWorkTime(1);
        PrefStyleState *style = pref()->styleState();
        style->setBreakStyle(BreakStyle::struggle);
        // The edited list is for the Style tab; breaks draw from the built-in texts.
        style->setPromptList({QStringLiteral("never shown")});
        QSet<QString> seen;
        for (int n = 0; n < 40; ++n) {
            const Break b = finishWork();
            QVERIFY2(BreakStyles::prompts(BreakStyle::struggle).contains(b.prompt),
                     qPrintable(b.prompt));
            seen.insert(b.prompt);
            endBreak();
        }
        QVERIFY2(seen.size() > 3, "the prompt should vary from break to break");

        pref()->setCustomBreakPrompt(true);
        pref()->setBreakPrompt(QStringLiteral("Look out of the window"));
        QCOMPARE(finishWork().prompt, QStringLiteral("Look out of the window"));
    }

    void pauseDuringABreak()
    {
        pref()->setWorkTime(1);
        finishWork();
        m_ticks.advance(3);
        AppState::setManualPause(true);
        QVERIFY(!TicktackController::isRunning());
        QCOMPARE(StatusBarController::pauseItemImage(), QStringLiteral("play.circle"));
        QCOMPARE(m_windows->count("closeBreak"), 0); // the break windows stay, frozen
        const QString frozen = AppState::breakState()->timeString();
        m_ticks.advance(5);
        QCOMPARE(AppState::breakState()->timeString(), frozen);

        endBreak(); // "Skip" while paused closes the windows and starts nothing
        QCOMPARE(m_windows->count("closeBreak"), 1);
        QVERIFY(!AppState::working());
        QVERIFY(!TicktackController::isRunning());

        AppState::setManualPause(false);
        QCOMPARE(workLeft(), QStringLiteral("01:00"));
        QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Stop -"));
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
        for (const auto &[mode, stop] : fatalSetUps)
            QTest::newRow(mode.c_str()) << QString::fromStdString(mode) << stop.first;
    }

    void fatalStopsReachTheLog()
    {
        QFETCH(QString, mode);
        QFETCH(QByteArray, message);
        const auto child = LogTail::runFatalChild(mode, m_home->path());
        QVERIFY(child.crashed);
        QVERIFY2(child.log.contains(" critical app.narv.Narv : ") && child.log.contains(message),
                 child.log.constData());
    }
};

int main(int argc, char **argv)
{
    TestSupport::ChildModes modes;
    for (const auto &[name, stop] : fatalSetUps) {
        modes[name] = [&, setUp = stop.second] {
            installQtMessageRouting();
            QCoreApplication app(argc, argv);
            ScratchHome home;
            ManualTickSource ticks;
            TicktackController::setTimer(&ticks);
            setUp(AppState::prefState());
            AppState::setWorking(true);
            StatusBarController::item();
            ticks.advance(int(qMax<qint64>(1, AppState::prefState()->workTime() * 60)));
            return 0; // not reached when the stop works
        };
    }
    const int child = TestSupport::runChildMode(argc, argv, modes);
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestCycle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_cycle.moc"
