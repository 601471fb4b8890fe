// The Qt Quick window backend: one window per screen, the fades, closing
// twice, a break that starts while the last one fades out, and monitors
// coming and going. Runs on a
// private X server with two monitors, "left" and "right" (tests/run-on-xvfb);
// the program as a whole on real shells is make test-desktops.

#include "TestSupport.h"

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

namespace {
bool xrandr(const char *args)
{
    return QProcess::execute(QStringLiteral("xrandr"), QString::fromLatin1(args).split(u' ')) == 0;
}

QStringList screenNames()
{
    QStringList names;
    for (QScreen *screen : QGuiApplication::screens())
        names << screen->name();
    return names;
}
} // namespace

class TestBreakWindows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_home.emplace(); }
    void init() { m_backend = std::make_unique<QmlWindowBackend>(); }
    void cleanup() { m_backend.reset(); }

    void oneWindowOnEachScreen();
    void fadesInAndOut();
    void screensComingAndGoing();

private:
    std::optional<ScratchHome> m_home;
    std::unique_ptr<QmlWindowBackend> m_backend;
};

// The engine is made on first need; each window covers its own screen and
// is titled with its name.
void TestBreakWindows::oneWindowOnEachScreen()
{
    QVERIFY(!m_backend->engine());
    m_backend->showBreak();
    QCOMPARE(screenNames(), (QStringList{QStringLiteral("left"), QStringLiteral("right")}));
    for (QScreen *screen : QGuiApplication::screens()) {
        QQuickView *window = m_backend->breakWindow(screen);
        QCOMPARE(window->status(), QQuickView::Ready);
        QCOMPARE(window->title(), screen->name());
        QCOMPARE(window->geometry(), screen->geometry());
    }
}

// A second close (a second break view ending the break) neither restarts nor
// stretches the fade-out; a break that starts during it stays shown.
void TestBreakWindows::fadesInAndOut()
{
    m_backend->showBreak();
    QQuickView *window = m_backend->breakWindows().first();
    QVERIFY(window->opacity() < 1.0);
    QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
    m_backend->closeBreak();
    QTRY_VERIFY(window->opacity() < 0.9);
    const qreal fading = window->opacity();
    m_backend->closeBreak();
    QVERIFY(window->opacity() <= fading);
    QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kFadeWait);
    m_backend->closeBreak(); // and once more when already hidden

    m_backend->showBreak();
    QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
    m_backend->closeBreak();
    QTRY_VERIFY(window->opacity() < 0.9);
    m_backend->showBreak(); // work was zero minutes long
    // Faded in again, which ends later than the fade-out would have.
    QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
    QVERIFY(window->isVisible());
}

void TestBreakWindows::screensComingAndGoing()
{
    m_backend->showBreak();
    QQuickView *right = m_backend->breakWindow(QGuiApplication::screens().at(1));

    // A monitor attached during a break gets its window at the next break.
    QVERIFY(xrandr("--setmonitor middle 640/169x400/105+640+200 none"));
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
    QVERIFY(xrandr("--delmonitor right"));
    QVERIFY(xrandr("--delmonitor middle"));
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 1, kFadeWait);
    QCOMPARE(m_backend->breakWindows().size(), 3);
    m_backend->closeBreak();
    for (QQuickView *window : m_backend->breakWindows())
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kFadeWait);
    m_backend->showBreak();
    QCOMPARE(m_backend->breakWindows().size(), 3);
    QCOMPARE(right->isVisible(), false); // no screen, not shown

    // Back again, it gets its old window.
    QVERIFY(xrandr("--setmonitor right 1280/338x800/211+1280+0 none"));
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
