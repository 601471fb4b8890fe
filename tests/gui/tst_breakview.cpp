// BreakView drawn offscreen: the prompt with and without backslash-n, "Skip"
// held like a button or absent, and the countdown ending the break in every
// view. The windows, the forced long break and the promotion are clicked in
// tests/e2e/break_windows.sh.

#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "windows/QmlWindowBackend.h"
#include "windows/WindowController.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <memory>
#include <vector>

using TestSupport::ScratchHome;

namespace {

struct WindowCalls {
    int closed = 0;
    int prefs = 0;
};

// Counts what the views ask of the window controller; the windows themselves
// are tst_breakwindows' business.
class RecordingWindows : public WindowBackend {
public:
    explicit RecordingWindows(WindowCalls &calls) : m_calls(calls) {}
    void showBreak() override {}
    void closeBreak() override { ++m_calls.closed; }
    void showAbout() override {}
    void showPrefView() override { ++m_calls.prefs; }

private:
    WindowCalls &m_calls;
};

} // namespace

class TestBreakView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void prompt_data();
    void prompt();
    void heldSkipEndsTheBreakAndAbsentSkipDoesNothing();
    void countdownEndRunsSkipOncePerView();
    void aNewBreakIsNotEndedByTheLastOne();

private:
    QQuickView *addView();
    QQuickItem *item(QQuickView *view, const char *name);
    QString workLength() { return timeString(AppState::prefState()->workTime() * 60); }

    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    WindowCalls m_calls;
    LogTail m_log;
    std::unique_ptr<QQmlEngine> m_engine;
    std::vector<std::unique_ptr<QQuickView>> m_views;
};

void TestBreakView::initTestCase()
{
    m_home.emplace();
    TicktackController::setTimer(&m_ticks);
    WindowController::setBackend(std::make_unique<RecordingWindows>(m_calls));
    m_engine = QmlWindowBackend::makeEngine();
}

void TestBreakView::init()
{
    PreferencesStore::instance().clear();
    AppState::setManualPause(false);
    AppState::promptState()->resetShortBreakTimes();
    AppState::promptState()->setShowSkipButton(true);
    AppState::promptState()->setPrompt(QStringLiteral("Rest your eyes"));
    m_calls = {};
    m_log.newMessages();
}

void TestBreakView::cleanup()
{
    m_views.clear();
    TicktackController::stop();
}

QQuickView *TestBreakView::addView()
{
    auto view = std::make_unique<QQuickView>(m_engine.get(), nullptr);
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->resize(1280, 800);
    view->setSource(QUrl(QStringLiteral("qrc:/Narv/Windows/BreakView.qml")));
    if (view->status() != QQuickView::Ready) {
        for (const QQmlError &error : view->errors())
            qWarning() << error.toString();
        return nullptr;
    }
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get()))
        return nullptr;
    m_views.push_back(std::move(view));
    return m_views.back().get();
}

QQuickItem *TestBreakView::item(QQuickView *view, const char *name)
{
    return view->rootObject()->findChild<QQuickItem *>(QLatin1String(name));
}

void TestBreakView::prompt_data()
{
    QTest::addColumn<QString>("prompt");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("lines");
    QTest::newRow("every backslash-n breaks the line")
        << QStringLiteral("a\\nb\\nc") << QStringLiteral("a\nb\nc") << 3;
    QTest::newRow("backslash before another letter, markup as typed")
        << QStringLiteral("C:\\temp <b>") << QStringLiteral("C:\\temp <b>") << 1;
    QTest::newRow("long text wraps inside the screen")
        << QString(QStringLiteral("rest ")).repeated(80).trimmed()
        << QString(QStringLiteral("rest ")).repeated(80).trimmed() << -1;
}

void TestBreakView::prompt()
{
    QFETCH(QString, prompt);
    QFETCH(QString, shown);
    QFETCH(int, lines);
    AppState::promptState()->setPrompt(prompt);
    QQuickView *view = addView();
    QVERIFY(view);
    QQuickItem *text = item(view, "prompt");
    QVERIFY(text);
    QCOMPARE(text->property("text").toString(), shown);
    // The prompt stays on the screen, whatever its length, and its lines are
    // centred on it.
    const QRectF onScreen = text->mapRectToScene(text->boundingRect());
    QVERIFY2(onScreen.left() >= 0 && onScreen.right() <= view->width(),
             qPrintable(QStringLiteral("%1..%2").arg(onScreen.left()).arg(onScreen.right())));
    QCOMPARE_LE(qAbs(onScreen.center().x() - view->width() / 2.0), 1.0);
    if (lines > 0)
        QCOMPARE(text->property("lineCount").toInt(), lines);
    else
        QVERIFY(text->property("lineCount").toInt() > 1);
}

void TestBreakView::heldSkipEndsTheBreakAndAbsentSkipDoesNothing()
{
    AppState::prefState()->setWorkTime(2);
    AppState::promptState()->showBreak();
    QQuickView *view = addView();
    QVERIFY(view);
    QQuickItem *skip = item(view, "skip");
    const QPoint centre = skip->mapRectToScene(skip->boundingRect()).center().toPoint();

    // Held for two seconds before the release, as a slow hand or a busy
    // machine makes it: still a click.
    QTest::mousePress(view, Qt::LeftButton, {}, centre);
    QTest::mouseRelease(view, Qt::LeftButton, {}, centre, 2000);
    QCOMPARE(m_calls.closed, 1);
    QCOMPARE(m_calls.prefs, 0);
    QVERIFY(m_log.newMessages().contains(QStringLiteral("skip break view")));
    QVERIFY(AppState::working());
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("02:00"));

    // Absent, not disabled: a click where it was does nothing.
    AppState::promptState()->setShowSkipButton(false);
    QTest::mouseClick(view, Qt::LeftButton, {}, centre);
    QCOMPARE(m_calls.closed, 1);
}

void TestBreakView::countdownEndRunsSkipOncePerView()
{
    AppState::prefState()->setBreakTime(3);
    QQuickView *first = addView();
    QQuickView *second = addView();
    QVERIFY(first && second);
    AppState::promptState()->showBreak();
    m_ticks.advance(1);
    QCOMPARE(item(first, "countdown")->property("text").toString(), QStringLiteral("00:02"));
    m_log.newMessages();
    m_ticks.advance(2);

    // Each view ends the break: two closes in a row, and work starts twice,
    // from its full length both times.
    QCOMPARE(m_calls.closed, 2);
    QCOMPARE(m_log.newMessages().count(QStringLiteral("skip break view")), 2);
    QVERIFY(AppState::working());
    QVERIFY(TicktackController::isRunning());
    QCOMPARE(AppState::workState()->timeString(), workLength());
    m_ticks.advance(5);
    QCOMPARE(m_calls.closed, 2); // nothing more happens once work runs
}

void TestBreakView::aNewBreakIsNotEndedByTheLastOne()
{
    AppState::prefState()->setBreakTime(1);
    QQuickView *view = addView();
    QVERIFY(view);
    AppState::promptState()->showBreak();
    m_ticks.advance(1);
    QCOMPARE(m_calls.closed, 1);
    // The expired flag of the last break is still set when the next begins;
    // starting the break resets it before the view could act on it.
    AppState::promptState()->showBreak();
    QCOMPARE(m_calls.closed, 1);
    QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:01"));
    QVERIFY(item(view, "skip")->isVisible());
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestBreakView test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_breakview.moc"
