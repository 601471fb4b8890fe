// The Qt Quick window backend: the engine made on first need, one window per
// screen found again by title, the fades, closing twice, a break that starts
// while the last one fades out, and monitors coming and going. Runs on a
// private X server with two monitors, "left" and "right" (tests/run-on-xvfb);
// the program as a whole, with the backing stores given back between breaks,
// is tests/e2e/break_windows.sh.

#include "TestSupport.h"

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

#include <QGuiApplication>
#include <QProcess>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QTest>

using TestSupport::ScratchHome;

namespace {
// Longer than a fade, so that waiting for one to end never fails on a busy machine.
constexpr int kFadeWait = QmlWindowBackend::fadeMilliseconds * 5;
} // namespace

class TestBreakWindows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void engineIsMadeOnFirstNeed();
    void fadesInAndOut();
    void aBreakDuringTheFadeOutStaysShown();
    void screensComingAndGoing();

private:
    std::optional<ScratchHome> m_home;
    ManualTickSource m_ticks;
    std::unique_ptr<QmlWindowBackend> m_backend;
};

void TestBreakWindows::initTestCase()
{
    m_home.emplace();
    TicktackController::setTimer(&m_ticks);
}

void TestBreakWindows::init()
{
    PreferencesStore::instance().clear();
    m_backend = std::make_unique<QmlWindowBackend>();
}

void TestBreakWindows::cleanup()
{
    m_backend.reset();
}

namespace {
bool xrandr(const QStringList &args)
{
    return QProcess::execute(QStringLiteral("xrandr"), args) == 0;
}

QStringList screenNames()
{
    QStringList names;
    for (QScreen *screen : QGuiApplication::screens())
        names << screen->name();
    return names;
}
} // namespace

void TestBreakWindows::engineIsMadeOnFirstNeed()
{
    QVERIFY(!m_backend->engine());
    m_backend->showBreak();
    QVERIFY(m_backend->engine());
    // One window per screen, titled with its name; where they go on the
    // screens is checked with xwininfo in the end-to-end test.
    QCOMPARE(screenNames(), (QStringList{QStringLiteral("left"), QStringLiteral("right")}));
    QStringList titles;
    for (QQuickView *window : m_backend->breakWindows()) {
        QCOMPARE(window->status(), QQuickView::Ready);
        titles << window->title();
    }
    titles.sort();
    QCOMPARE(titles, screenNames());
}

void TestBreakWindows::fadesInAndOut()
{
    m_backend->showBreak();
    QQuickView *window = m_backend->breakWindows().first();
    QVERIFY(window->opacity() < 1.0);
    QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
    m_backend->closeBreak();
    QVERIFY(window->isVisible()); // fading, not gone
    QTest::qWait(QmlWindowBackend::fadeMilliseconds / 2);
    const qreal halfway = window->opacity();
    QVERIFY(halfway < 1.0);
    // The second close (a second break view ending the break) neither
    // restarts nor stretches the fade.
    m_backend->closeBreak();
    QVERIFY(window->opacity() <= halfway);
    QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), QmlWindowBackend::fadeMilliseconds * 2);
    QCOMPARE(window->opacity(), 0.0);
    m_backend->closeBreak(); // and once more when already hidden
    QVERIFY(!window->isVisible());
}

void TestBreakWindows::aBreakDuringTheFadeOutStaysShown()
{
    m_backend->showBreak();
    QQuickView *window = m_backend->breakWindows().first();
    m_backend->closeBreak();
    QTest::qWait(300);
    m_backend->showBreak(); // work was zero minutes long
    // Past the end the fade-out would have had.
    QTest::qWait(QmlWindowBackend::fadeMilliseconds + 500);
    QVERIFY(window->isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
}

void TestBreakWindows::screensComingAndGoing()
{
    m_backend->showBreak();
    QQuickView *right = m_backend->breakWindow(QGuiApplication::screens().at(1));

    // A monitor attached during a break gets its window at the next break.
    QVERIFY(xrandr({QStringLiteral("--setmonitor"), QStringLiteral("middle"),
                    QStringLiteral("640/169x400/105+640+200"), QStringLiteral("none")}));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 3, kFadeWait);
    QCOMPARE(m_backend->breakWindows().size(), 2);
    m_backend->closeBreak();
    QTRY_VERIFY_WITH_TIMEOUT(!right->isVisible(), kFadeWait);
    m_backend->showBreak();
    QCOMPARE(m_backend->breakWindows().size(), 3);
    QScreen *middle =
        QGuiApplication::screens().at(screenNames().indexOf(QStringLiteral("middle")));
    QCOMPARE(m_backend->breakWindow(middle)->geometry(), QRect(640, 200, 640, 400));

    // A monitor removed during a break: its window outlives it and still
    // goes away with the break.
    QVERIFY(xrandr({QStringLiteral("--delmonitor"), QStringLiteral("right")}));
    QVERIFY(xrandr({QStringLiteral("--delmonitor"), QStringLiteral("middle")}));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 1, kFadeWait);
    QCOMPARE(m_backend->breakWindows().size(), 3);
    m_backend->closeBreak();
    for (QQuickView *window : m_backend->breakWindows())
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kFadeWait);
    m_backend->showBreak();
    QCOMPARE(m_backend->breakWindows().size(), 3);
    QCOMPARE(right->isVisible(), false); // no screen, not shown

    // Back again, it gets its old window.
    QVERIFY(xrandr({QStringLiteral("--setmonitor"), QStringLiteral("right"),
                    QStringLiteral("1280/338x800/211+1280+0"), QStringLiteral("none")}));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 2, kFadeWait);
    m_backend->closeBreak();
    QTRY_VERIFY_WITH_TIMEOUT(!m_backend->breakWindows().first()->isVisible(), kFadeWait);
    m_backend->showBreak();
    QCOMPARE(m_backend->breakWindow(QGuiApplication::screens().at(1)), right);
    QVERIFY(right->isVisible());
    QCOMPARE(right->geometry(), QRect(1280, 0, 1280, 800));
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestBreakWindows test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_breakwindows.moc"
