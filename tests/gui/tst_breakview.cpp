// BreakView as the user sees it, drawn offscreen: the prompt with and without
// backslash-n, "Skip" present or absent, the countdown ending the break in
// every view, and the water reminder's promotion.

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
    void promptFollowsTheSharedState();
    void skipButtonFollowsTheSkipFlag();
    void forcedLongBreakHasNoSkip();
    void skipEndsTheBreak();
    void countdownEndRunsSkipOncePerView();
    void aNewBreakIsNotEndedByTheLastOne();
    void promotionTapEndsTheBreakAndOpensPreferences();

private:
    QQuickView *addView();
    QQuickItem *item(QQuickView *view, const char *name);
    void click(QQuickView *view, QQuickItem *target);
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

void TestBreakView::click(QQuickView *view, QQuickItem *target)
{
    const QPointF centre = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(view, Qt::LeftButton, {}, centre.toPoint());
}

void TestBreakView::prompt_data()
{
    QTest::addColumn<QString>("prompt");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("lines");
    QTest::newRow("one paragraph")
        << QStringLiteral("Stand up and stretch") << QStringLiteral("Stand up and stretch") << 1;
    QTest::newRow("backslash-n breaks the line")
        << QStringLiteral("Stand up.\\nLook far away.")
        << QStringLiteral("Stand up.\nLook far away.") << 2;
    QTest::newRow("every backslash-n")
        << QStringLiteral("a\\nb\\nc") << QStringLiteral("a\nb\nc") << 3;
    QTest::newRow("a real line break stays")
        << QStringLiteral("a\nb") << QStringLiteral("a\nb") << 2;
    QTest::newRow("backslash before another letter")
        << QStringLiteral("C:\\temp") << QStringLiteral("C:\\temp") << 1;
    QTest::newRow("markup is shown as typed")
        << QStringLiteral("<b>bold</b>") << QStringLiteral("<b>bold</b>") << 1;
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
    QCOMPARE(text->property("horizontalAlignment").toInt(), int(Qt::AlignHCenter));
    if (lines > 0)
        QCOMPARE(text->property("lineCount").toInt(), lines);
    else
        QVERIFY(text->property("lineCount").toInt() > 1);
    QCOMPARE(text->property("font").value<QFont>().pixelSize(), 40);
    QVERIFY(text->property("font").value<QFont>().bold());
}

void TestBreakView::promptFollowsTheSharedState()
{
    QQuickView *first = addView();
    QQuickView *second = addView();
    QVERIFY(first && second);
    AppState::promptState()->setPrompt(QStringLiteral("Drink\\nsomething"));
    AppState::breakState()->setTimeString(QStringLiteral("04:59"));
    for (QQuickView *view : {first, second}) {
        QCOMPARE(item(view, "prompt")->property("text").toString(),
                 QStringLiteral("Drink\nsomething"));
        QCOMPARE(item(view, "countdown")->property("text").toString(), QStringLiteral("04:59"));
    }
}

void TestBreakView::skipButtonFollowsTheSkipFlag()
{
    QQuickView *view = addView();
    QVERIFY(view);
    QQuickItem *skip = item(view, "skip");
    QVERIFY(skip);
    QVERIFY(skip->isVisible());
    QVERIFY(skip->width() > 0);
    const QRectF where = skip->mapRectToScene(skip->boundingRect());

    AppState::promptState()->setShowSkipButton(false);
    QVERIFY(!skip->isVisible());
    // Absent, not disabled: a click where it was does nothing.
    QTest::mouseClick(view, Qt::LeftButton, {}, where.center().toPoint());
    QCOMPARE(m_calls.closed, 0);
    QVERIFY(!m_log.newMessages().contains(QStringLiteral("skip break view")));

    AppState::promptState()->setShowSkipButton(true);
    QVERIFY(skip->isVisible());
}

void TestBreakView::forcedLongBreakHasNoSkip()
{
    PrefState *pref = AppState::prefState();
    pref->setShortBreakTimes(2);
    pref->setForceLongBreak(true);
    QQuickView *view = addView();
    QVERIFY(view);
    QQuickItem *skip = item(view, "skip");
    QList<bool> shown;
    for (int n = 0; n < 2; ++n) {
        AppState::promptState()->showBreak();
        shown << skip->isVisible();
        AppState::promptState()->closePrompt();
    }
    QCOMPARE(shown, (QList<bool>{true, false}));
    QVERIFY(item(view, "waterReminder")->isVisible()); // the promotion stays
}

void TestBreakView::skipEndsTheBreak()
{
    AppState::prefState()->setWorkTime(2);
    AppState::promptState()->showBreak();
    QQuickView *view = addView();
    QVERIFY(view);
    m_log.newMessages();
    click(view, item(view, "skip"));
    QCOMPARE(m_calls.closed, 1);
    QCOMPARE(m_calls.prefs, 0);
    QVERIFY(m_log.newMessages().contains(QStringLiteral("skip break view")));
    QVERIFY(AppState::working());
    QCOMPARE(AppState::workState()->timeString(), QStringLiteral("02:00"));
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

void TestBreakView::promotionTapEndsTheBreakAndOpensPreferences()
{
    PrefState *pref = AppState::prefState();
    pref->setShortBreakTimes(1);
    pref->setForceLongBreak(true);
    AppState::promptState()->showBreak(); // long and unskippable
    QQuickView *view = addView();
    QVERIFY(view);
    QVERIFY(!item(view, "skip")->isVisible());
    m_log.newMessages();

    click(view, item(view, "waterReminder"));
    const QStringList log = m_log.newMessages();
    const qsizetype clicked = log.indexOf(QStringLiteral("Click new feature: Water Reminder"));
    QVERIFY2(clicked >= 0, qPrintable(log.join(u'\n')));
    QVERIFY(log.indexOf(QStringLiteral("skip break view")) > clicked);
    QCOMPARE(m_calls.closed, 1);
    QCOMPARE(m_calls.prefs, 1);
    QCOMPARE(AppState::workState()->timeString(), workLength());

    // "New Feature:" above the link is not part of it.
    QQuickItem *promotion = item(view, "promotion");
    QTest::mouseClick(view, Qt::LeftButton, {}, promotion->mapToScene(QPointF(4, 4)).toPoint());
    QCOMPARE(m_calls.prefs, 1);
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestBreakView test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_breakview.moc"
