// BreakView drawn offscreen: the prompt with and without backslash-n, "Skip"
// held like a button, and the countdown ending the break in every view. The
// windows, the forced long break and the promotion are clicked in
// tests/e2e/break_windows.sh.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "windows/QmlWindowBackend.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <memory>
#include <vector>

class TestBreakView : public QObject {
    Q_OBJECT

    std::optional<TestSupport::ScratchHome> m_home;
    ManualTickSource m_ticks;
    // What the views ask of the windows; the windows themselves are
    // tst_breakwindows' business.
    WindowsOf<FakeWindows> m_windows;
    LogTail m_log;
    std::unique_ptr<QQmlEngine> m_engine;
    std::vector<std::unique_ptr<QQuickView>> m_views;

    int closes() const { return m_windows.windows.count("closeBreak"); }

    QQuickView *addView()
    {
        auto view = std::make_unique<QQuickView>(m_engine.get(), nullptr);
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->resize(1280, 800);
        view->setSource(QUrl(QStringLiteral("qrc:/Narv/Windows/BreakView.qml")));
        view->show();
        if (view->status() != QQuickView::Ready || !QTest::qWaitForWindowExposed(view.get()))
            return nullptr;
        m_views.push_back(std::move(view));
        return m_views.back().get();
    }

    static QQuickItem *item(QQuickView *view, const char *name)
    {
        return view->rootObject()->findChild<QQuickItem *>(QLatin1String(name));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        TicktackController::setTimer(&m_ticks);
        m_engine = QmlWindowBackend::makeEngine();
    }

    void init()
    {
        PreferencesStore::instance().clear();
        AppState::setManualPause(false);
        AppState::promptState()->resetShortBreakTimes();
        AppState::promptState()->setPrompt(QStringLiteral("Rest your eyes"));
        m_windows.windows.calls.clear();
        m_log.newMessages();
    }

    void cleanup()
    {
        m_views.clear();
        TicktackController::stop();
    }

    void prompt_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("lines"); // -1: more than one
        const QString longText = QStringLiteral("rest ").repeated(80).trimmed();
        QTest::newRow("every backslash-n breaks the line")
            << QStringLiteral("a\\nb\\nc") << QStringLiteral("a\nb\nc") << 3;
        QTest::newRow("backslash before another letter, markup as typed")
            << QStringLiteral("C:\\temp <b>") << QStringLiteral("C:\\temp <b>") << 1;
        QTest::newRow("long text wraps inside the screen") << longText << longText << -1;
    }

    // The prompt stays on the screen, whatever its length, centred on it.
    void prompt()
    {
        QFETCH(QString, prompt);
        QFETCH(QString, shown);
        QFETCH(int, lines);
        AppState::promptState()->setPrompt(prompt);
        QQuickView *view = addView();
        QVERIFY(view);
        QQuickItem *text = item(view, "prompt");
        QCOMPARE(text->property("text").toString(), shown);
        const QRectF onScreen = text->mapRectToScene(text->boundingRect());
        QVERIFY(onScreen.left() >= 0 && onScreen.right() <= view->width());
        QCOMPARE_LE(qAbs(onScreen.center().x() - view->width() / 2.0), 1.0);
        const int lineCount = text->property("lineCount").toInt();
        QVERIFY(lines > 0 ? lineCount == lines : lineCount > 1);
    }

    // Held for two seconds before the release, as a slow hand or a busy
    // machine makes it: still a click, and work starts from its full length.
    void heldSkipEndsTheBreak()
    {
        AppState::prefState()->setWorkTime(2);
        AppState::promptState()->showBreak();
        QQuickView *view = addView();
        QVERIFY(view);
        QQuickItem *skip = item(view, "skip");
        const QPoint centre = skip->mapRectToScene(skip->boundingRect()).center().toPoint();
        QTest::mousePress(view, Qt::LeftButton, {}, centre);
        QTest::mouseRelease(view, Qt::LeftButton, {}, centre, 2000);
        QCOMPARE(closes(), 1);
        QCOMPARE(m_windows.windows.count("showPrefView"), 0);
        QVERIFY(m_log.newMessages().contains(QStringLiteral("skip break view")));
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("02:00"));
    }

    // Each view ends the break at the countdown's end: two closes, work
    // started from its full length, nothing more once it runs. The expired
    // flag is still set when the next break begins; it must not end it.
    void countdownEndRunsSkipOncePerView()
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
        QCOMPARE(closes(), 2);
        QCOMPARE(m_log.newMessages().count(QStringLiteral("skip break view")), 2);
        QVERIFY(TicktackController::isRunning());
        QCOMPARE(AppState::workState()->timeString(),
                 timeString(AppState::prefState()->workTime() * 60));
        m_ticks.advance(5);
        QCOMPARE(closes(), 2);

        AppState::promptState()->showBreak();
        QCOMPARE(closes(), 2);
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:03"));
        QVERIFY(item(second, "skip")->isVisible());
    }
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestBreakView test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_breakview.moc"
