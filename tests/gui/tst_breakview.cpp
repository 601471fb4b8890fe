// BreakView drawn offscreen: the prompt, "Skip" held like a button, and the
// countdown ending the break in every view. The windows themselves are
// tst_breakwindows'.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"
#include "windows/QmlWindowBackend.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <memory>
#include <vector>

class TestBreakView : public QObject {
    Q_OBJECT

    TestSupport::ScratchHome m_home;
    ManualTickSource m_ticks;
    WindowsOf<FakeWindows> m_windows; // what the views ask of the windows
    std::unique_ptr<QQmlEngine> m_engine = QmlWindowBackend::makeEngine();
    std::vector<std::unique_ptr<QQuickView>> m_views;

    int closes() const { return m_windows.windows.count("closeBreak"); }

    QQuickView *addView()
    {
        auto view = std::make_unique<QQuickView>(m_engine.get(), nullptr);
        view->resize(1280, 800);
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->setSource(QUrl(QStringLiteral("qrc:/Narv/Windows/BreakView.qml")));
        view->show();
        if (view->status() != QQuickView::Ready || !QTest::qWaitForWindowExposed(view.get()))
            return nullptr;
        return m_views.emplace_back(std::move(view)).get();
    }

    static QQuickItem *item(QQuickView *view, const char *name)
    {
        return view->rootObject()->findChild<QQuickItem *>(QLatin1String(name));
    }

private Q_SLOTS:
    void initTestCase() { TicktackController::setTimer(&m_ticks); }

    void init()
    {
        PreferencesStore::instance().clear();
        AppState::promptState()->resetShortBreakTimes();
        m_windows.windows.calls.clear();
    }

    void cleanup()
    {
        m_views.clear();
        TicktackController::stop();
    }

    // Backslash-n breaks the line, anything else shows as typed, and a long
    // text wraps: the prompt stays on the screen, centred on it.
    void prompt()
    {
        const QString longText = QStringLiteral(" rest").repeated(80);
        AppState::promptState()->setPrompt(QStringLiteral("C:\\temp\\n<b>\\n") + longText);
        QQuickView *view = addView();
        QVERIFY(view);
        QQuickItem *text = item(view, "prompt");
        QCOMPARE(text->property("text").toString(), QStringLiteral("C:\\temp\n<b>\n") + longText);
        QCOMPARE_GT(text->property("lineCount").toInt(), 3);
        const QRectF onScreen = text->mapRectToScene(text->boundingRect());
        QVERIFY(onScreen.left() >= 0 && onScreen.right() <= view->width());
        QCOMPARE_LE(qAbs(onScreen.center().x() - view->width() / 2.0), 1.0);
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
        QCOMPARE(AppState::workState()->timeString(), QStringLiteral("02:00"));
    }

    // Each view ends the break at the countdown's end: two closes, work
    // started, nothing more once it runs. The expired flag is still set when
    // the next break begins; it must not end it.
    void countdownEndRunsSkipOncePerView()
    {
        AppState::prefState()->setBreakTime(3);
        QQuickView *first = addView();
        QQuickView *second = addView();
        QVERIFY(first && second);
        AppState::promptState()->showBreak();
        m_ticks.advance(1);
        QCOMPARE(item(first, "countdown")->property("text").toString(), QStringLiteral("00:02"));
        m_ticks.advance(2);
        QCOMPARE(closes(), 2);
        QVERIFY(TicktackController::isRunning());
        m_ticks.advance(5);
        QCOMPARE(closes(), 2);

        AppState::promptState()->showBreak();
        QCOMPARE(closes(), 2);
        QCOMPARE(AppState::breakState()->timeString(), QStringLiteral("00:03"));
        QVERIFY(item(second, "skip")->isVisible());
    }
};

QTEST_MAIN(TestBreakView)

#include "tst_breakview.moc"
