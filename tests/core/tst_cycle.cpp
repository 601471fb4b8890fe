// The work/break cycle driven by stepped ticks: countdown, break rhythm, skip
// flag, prompts, pause, the work time changing mid-break, and the fatal stops.

#include "TestSupport.h"

#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/Log.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"
#include "windows/WindowController.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

using TestSupport::ScratchHome;

namespace {

struct WindowCalls {
    int shown = 0;
    int closed = 0;
};

class FakeWindows : public WindowBackend {
public:
    explicit FakeWindows(WindowCalls &calls) : m_calls(calls) {}
    void showBreak() override { ++m_calls.shown; }
    void closeBreak() override { ++m_calls.closed; }
    void showAbout() override {}
    void showPrefView() override {}

private:
    WindowCalls &m_calls;
};

struct StatusCalls {
    QString title;
    QString pauseImage;
    QString pauseTitle;
};

class FakeStatusItem : public StatusItemBackend {
public:
    explicit FakeStatusItem(StatusCalls &calls) : m_calls(calls) {}
    void setTitle(const QString &title) override { m_calls.title = title; }
    void setPauseItem(const QString &image, const QString &title) override
    {
        m_calls.pauseImage = image;
        m_calls.pauseTitle = title;
    }

private:
    StatusCalls &m_calls;
};

// What one break looked like when it started.
struct Break {
    QString length; // the break countdown's first text
    bool skip;
    QString prompt;
};

} // namespace

class TestCycle : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void timeStringTable_data();
    void timeStringTable();
    void countdownTicksAndFiresOnce();
    void shortCountdownsFireOnTheFirstTick();
    void startingOneCountdownStopsTheOther();
    void stopLogsEveryTime();

    void launchStartsWorkAtOnce();
    void breakRhythm_data();
    void breakRhythm();
    void forcedLongBreakHasNoSkip();
    void resetStartsANewRound();
    void promptsComeFromTheStyleOrTheCustomText();
    void newDayGreeting();
    void pauseDuringABreak();
    void workTimeChangeMidBreak();
    void assigningWorkingRestartsFromTheFullLength();

    void fatalStopsReachTheLog_data();
    void fatalStopsReachTheLog();

private:
    // Runs the current work period to its end; returns how the break started.
    Break finishWork();
    // Ends the running break the way the break screen does.
    void endBreak();

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    WindowCalls m_windows;
    StatusCalls m_status;
    PrefState *pref() { return AppState::prefState(); }
};

void TestCycle::initTestCase()
{
    m_home.emplace();
    TicktackController::setTimer(&m_ticks);
    WindowController::setBackend(std::make_unique<FakeWindows>(m_windows));
    StatusBarController::setBackendFactory(
        [this] { return std::make_unique<FakeStatusItem>(m_status); });
    StatusBarController::item();
}

void TestCycle::init()
{
    PreferencesStore::instance().clear();
    AppState::setManualPause(false);
    AppState::promptState()->resetShortBreakTimes();
    m_windows = {};
}

Break TestCycle::finishWork()
{
    const qint64 seconds = pref()->workTime() * 60;
    m_ticks.advance(int(seconds));
    PromptState *prompt = AppState::promptState();
    return {AppState::breakState()->timeString(), prompt->showSkipButton(), prompt->prompt()};
}

void TestCycle::endBreak()
{
    AppState::promptState()->closePrompt();
}

void TestCycle::timeStringTable_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("negative") << qint64(-5) << QStringLiteral("00:00");
    QTest::newRow("zero") << qint64(0) << QStringLiteral("00:00");
    QTest::newRow("one") << qint64(1) << QStringLiteral("00:01");
    QTest::newRow("59") << qint64(59) << QStringLiteral("00:59");
    QTest::newRow("60") << qint64(60) << QStringLiteral("01:00");
    QTest::newRow("work") << qint64(1500) << QStringLiteral("25:00");
    QTest::newRow("just under an hour") << qint64(3599) << QStringLiteral("59:59");
    QTest::newRow("an hour, no separator") << qint64(3600) << QStringLiteral("0100:00");
    QTest::newRow("3725") << qint64(3725) << QStringLiteral("0102:05");
    QTest::newRow("100 hours") << qint64(360000) << QStringLiteral("10000:00");
}

void TestCycle::timeStringTable()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    QCOMPARE(timeString(seconds), text);
}

void TestCycle::countdownTicksAndFiresOnce()
{
    TicktackState state;
    QSignalSpy up(&state, &TicktackState::timesUpChanged);
    TicktackController::ticktack(3, &state);
    QCOMPARE(state.timeString(), QStringLiteral("00:03")); // before the first tick
    QCOMPARE(state.timesUp(), false);
    m_ticks.advance(2);
    QCOMPARE(state.timeString(), QStringLiteral("00:01"));
    QCOMPARE(state.timesUp(), false);
    m_ticks.advance(1);
    QCOMPARE(state.timesUp(), true);
    QCOMPARE(state.timeString(), QStringLiteral("00:00"));
    // It keeps ticking past zero without firing again.
    QSignalSpy texts(&state, &TicktackState::timeStringChanged);
    m_ticks.advance(5);
    QCOMPARE(texts.count(), 5);
    QCOMPARE(state.timeString(), QStringLiteral("00:00"));
    QCOMPARE(up.count(), 2); // the reset at start, then the expiry
    TicktackController::stop();
}

void TestCycle::shortCountdownsFireOnTheFirstTick()
{
    for (qint64 seconds : {qint64(0), qint64(-3), qint64(1)}) {
        TicktackState state;
        TicktackController::ticktack(seconds, &state);
        QCOMPARE(state.timeString(),
                 seconds == 1 ? QStringLiteral("00:01") : QStringLiteral("00:00"));
        QVERIFY(!state.timesUp());
        m_ticks.advance(1);
        QVERIFY2(state.timesUp(), qPrintable(QString::number(seconds)));
    }
    TicktackController::stop();
}

void TestCycle::startingOneCountdownStopsTheOther()
{
    TicktackController::work(600);
    m_ticks.advance(2);
    TicktackController::startBreak(30);
    m_ticks.advance(4);
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("09:58"));
    QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:26"));
    TicktackController::stop();
    m_ticks.advance(3);
    QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:26"));
    QVERIFY(!TicktackController::isRunning());
}

void TestCycle::stopLogsEveryTime()
{
    const QString path = Logger::logfilePath();
    QFile log(path);
    QVERIFY(log.open(QIODevice::ReadOnly));
    const int before = log.readAll().count("ticktack timer stoped 1.0\n");
    TicktackController::stop();
    TicktackController::stop();
    log.seek(0);
    QCOMPARE(log.readAll().count("ticktack timer stoped 1.0\n"), before + 2);
}

void TestCycle::launchStartsWorkAtOnce()
{
    AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    QVERIFY(TicktackController::isRunning());
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("25:00"));
    QCOMPARE(m_status.title, QStringLiteral("25:00"));
    QCOMPARE(m_status.pauseImage, QStringLiteral("stop.circle"));
    QCOMPARE(m_status.pauseTitle, QStringLiteral("- Stop -"));
    m_ticks.advance(61);
    QCOMPARE(m_status.title, QStringLiteral("23:59"));
}

void TestCycle::breakRhythm_data()
{
    QTest::addColumn<qint64>("every");
    QTest::newRow("every break long") << qint64(1);
    QTest::newRow("every third") << qint64(3);
    QTest::newRow("every fourth") << qint64(4);
}

void TestCycle::breakRhythm()
{
    QFETCH(qint64, every);
    pref()->setShortBreakTimes(every);
    pref()->setWorkTime(1);
    pref()->setBreakTime(20);
    pref()->setLongBreakTime(2);

    for (int n = 1; n <= 2 * every + 1; ++n) {
        const Break b = finishWork();
        const bool longBreak = n % every == 0;
        QCOMPARE(m_windows.shown, n);
        QCOMPARE(b.length, longBreak ? QStringLiteral("02:00") : QStringLiteral("00:20"));
        QCOMPARE(b.skip, true);
        QCOMPARE(m_status.title, QString()); // the title empties when work runs out
        // Skipped or finished, the break has already been counted.
        if (n % 2)
            m_ticks.advance(longBreak ? 120 : 20);
        QVERIFY(AppState::working());
        endBreak();
        QCOMPARE(m_windows.closed, n);
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("01:00"));
    }
}

void TestCycle::forcedLongBreakHasNoSkip()
{
    pref()->setShortBreakTimes(2);
    pref()->setForceLongBreak(true);
    pref()->setWorkTime(1);
    QList<bool> skips;
    for (int n = 0; n < 4; ++n) {
        skips.append(finishWork().skip);
        endBreak();
    }
    QCOMPARE(skips, (QList<bool>{true, false, true, false}));
}

void TestCycle::resetStartsANewRound()
{
    pref()->setShortBreakTimes(3);
    pref()->setWorkTime(1);
    pref()->setBreakTime(20);
    pref()->setLongBreakTime(2);
    finishWork();
    endBreak();
    finishWork();
    endBreak();
    QCOMPARE(AppState::promptState()->shortBreakTimes(), 2);
    AppState::promptState()->resetShortBreakTimes();
    QStringList lengths;
    for (int n = 0; n < 3; ++n) {
        lengths.append(finishWork().length);
        endBreak();
    }
    QCOMPARE(lengths, (QStringList{QStringLiteral("00:20"), QStringLiteral("00:20"),
                                   QStringLiteral("02:00")}));
}

void TestCycle::promptsComeFromTheStyleOrTheCustomText()
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
    for (int n = 0; n < 3; ++n) {
        QCOMPARE(finishWork().prompt, QStringLiteral("Look out of the window"));
        endBreak();
    }
}

void TestCycle::newDayGreeting()
{
    pref()->setShortBreakTimes(3);
    pref()->setWorkTime(1);
    pref()->setCustomBreakPrompt(true); // does not apply to the greeting
    pref()->styleState()->setBreakStyle(BreakStyle::relaxation);
    finishWork();
    endBreak();
    PromptState *prompt = AppState::promptState();
    const int shown = m_windows.shown;
    prompt->showNewDay();
    QCOMPARE(m_windows.shown, shown + 1);
    QCOMPARE(prompt->showSkipButton(), false);
    QVERIFY(BreakStyles::newDayPrompts(BreakStyle::relaxation).contains(prompt->prompt()));
    QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:10"));
    QCOMPARE(prompt->shortBreakTimes(), 1);
    m_ticks.advance(10);
    QVERIFY(AppState::breakState()->timesUp());

    QCOMPARE(PromptState::fallbackNewDayGreeting().toUtf8().size(), 70);
    QCOMPARE(PromptState::fallbackNewDayGreeting().count(QLatin1Char('\n')), 2);
}

void TestCycle::pauseDuringABreak()
{
    pref()->setWorkTime(1);
    finishWork();
    m_ticks.advance(3);
    AppState::setManualPause(true);
    QVERIFY(!AppState::working());
    QVERIFY(!TicktackController::isRunning());
    QCOMPARE(StatusBarController::pauseItemImage(), QStringLiteral("play.circle"));
    QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Wrok -"));
    QCOMPARE(m_windows.closed, 0); // the break windows stay, frozen
    const QString frozen = AppState::breakState()->timeString();
    m_ticks.advance(5);
    QCOMPARE(AppState::breakState()->timeString(), frozen);

    endBreak(); // "Skip" while paused closes the windows and starts nothing
    QCOMPARE(m_windows.closed, 1);
    QVERIFY(!AppState::working());
    QVERIFY(!TicktackController::isRunning());

    AppState::setManualPause(false);
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("01:00"));
    QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Stop -"));
}

void TestCycle::workTimeChangeMidBreak()
{
    pref()->setWorkTime(1);
    pref()->setBreakTime(30);
    finishWork();
    m_ticks.advance(4);
    pref()->setWorkTime(2);
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("02:00"));
    m_ticks.advance(10);
    // The break countdown was replaced; its windows stay with the time frozen.
    QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:26"));
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("01:50"));
    QCOMPARE(m_windows.closed, 0);
}

void TestCycle::assigningWorkingRestartsFromTheFullLength()
{
    AppState::setWorking(true);
    m_ticks.advance(100);
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("23:20"));
    AppState::setWorking(true);
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("25:00"));
    AppState::setWorking(false);
    QVERIFY(!TicktackController::isRunning());
    AppState::setWorking(false); // stopping again is harmless
    QCOMPARE(StatusBarController::pauseItemTitle(), QStringLiteral("- Wrok -"));
}

void TestCycle::fatalStopsReachTheLog_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no short breaks")
        << QStringLiteral("short-breaks-zero") << QByteArray("Division by zero");
    QTest::newRow("long break overflow")
        << QStringLiteral("long-break-overflow") << QByteArray("Arithmetic overflow");
    QTest::newRow("work time overflow")
        << QStringLiteral("work-time-overflow") << QByteArray("Arithmetic overflow");
}

void TestCycle::fatalStopsReachTheLog()
{
    QFETCH(QString, mode);
    QFETCH(QByteArray, message);
    QTemporaryDir home;
    const auto child = TestSupport::runChild(mode, home.path());
    QCOMPARE(child.status, QProcess::CrashExit);
    QFile log(Logger::logfilePath().replace(m_home->path(), home.path()));
    QVERIFY2(log.open(QIODevice::ReadOnly), qPrintable(log.fileName()));
    const QByteArray text = log.readAll();
    QVERIFY2(text.contains(" critical app.narv.Narv : ") && text.contains(message),
             text.constData());
}

namespace {
// Child processes that end in a fatal stop.
int fatalChild(int argc, char **argv, const std::function<void(PrefState *)> &setUp)
{
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
}
} // namespace

int main(int argc, char **argv)
{
    const int child = TestSupport::runChildMode(
        argc, argv,
        {
            {"short-breaks-zero",
             [&] {
                 return fatalChild(argc, argv, [](PrefState *p) {
                     p->setWorkTime(0);
                     p->setShortBreakTimes(0);
                 });
             }},
            {"long-break-overflow",
             [&] {
                 return fatalChild(argc, argv, [](PrefState *p) {
                     p->setWorkTime(0);
                     p->setShortBreakTimes(1);
                     p->setLongBreakTime(std::numeric_limits<qint64>::max() / 10);
                 });
             }},
            {"work-time-overflow",
             [&] {
                 return fatalChild(argc, argv, [](PrefState *p) {
                     p->setWorkTime(std::numeric_limits<qint64>::max() / 2);
                 });
             }},
        });
    if (child >= 0)
        return child;
    QCoreApplication app(argc, argv);
    TestCycle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_cycle.moc"
