// The water panel's window, made by the Qt Quick window backend on a private X
// server with two monitors (tests/run-on-xvfb): its place, the fades when the
// menu toggles it, see-through only with a compositor, and the fatal stop for
// a target of 0 with its message in the log. The program as a whole is
// tests/e2e/water_panel.sh.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Log.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "water/WaterPanel.h"
#include "windows/QmlWindowBackend.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>

#include <xcb/xcb.h>

#include <cstdlib>

using TestSupport::ScratchHome;

namespace {
// Longer than a fade, so that waiting for one to end never fails on a busy machine.
constexpr int kFadeWait = QmlWindowBackend::fadeMilliseconds * 5;

// Plays a compositing manager for as long as it lives: owns the selection
// _NET_WM_CM_S0 through a window of its own.
class CompositorSelection {
public:
    CompositorSelection()
    {
        auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        m_c = x11->connection();
        xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
        m_window = xcb_generate_id(m_c);
        xcb_create_window(m_c, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        const char name[] = "_NET_WM_CM_S0";
        xcb_intern_atom_reply_t *atom =
            xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, sizeof name - 1, name), nullptr);
        m_atom = atom->atom;
        std::free(atom);
        xcb_set_selection_owner(m_c, m_window, m_atom, XCB_CURRENT_TIME);
        xcb_flush(m_c);
    }
    ~CompositorSelection()
    {
        xcb_set_selection_owner(m_c, XCB_WINDOW_NONE, m_atom, XCB_CURRENT_TIME);
        xcb_destroy_window(m_c, m_window);
        xcb_flush(m_c);
    }

private:
    xcb_connection_t *m_c = nullptr;
    xcb_window_t m_window = 0;
    xcb_atom_t m_atom = 0;
};
} // namespace

class TestWaterWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        PreferencesStore::instance().clear();
        // Inside working hours, whatever the hour the test runs at.
        Clock::setNowSource([] { return QDateTime(QDate(2026, 11, 23), QTime(10, 0)); });
    }

    void theMenuTogglesOnePanelWithFades()
    {
        // The status menu's water item.
        WindowController::toggleWaterView();
        QQuickView *window = m_backend->waterWindow();
        QVERIFY(m_backend->isWaterViewVisible());
        // The top-right corner of the primary monitor, "left", 1280 wide.
        const QRect place(1280 - 280, 0, 280, 330);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QTRY_COMPARE(window->geometry(), place);
        QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);

        WindowController::toggleWaterView();
        // On its way out it counts as gone, but is still there, fading.
        QVERIFY(!m_backend->isWaterViewVisible());
        QTRY_VERIFY(window->opacity() < 0.9);
        QVERIFY(window->isVisible());
        // Wanted again before the fade ends: it comes back and stays.
        WindowController::toggleWaterView();
        QVERIFY(m_backend->isWaterViewVisible());
        QTRY_COMPARE_WITH_TIMEOUT(window->opacity(), 1.0, kFadeWait);
        QVERIFY(window->isVisible());

        WindowController::toggleWaterView();
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kFadeWait);
        // Kept for the next reminder, not made again, and whole again where it
        // was. Hidden, it gave its pixels back by going to 1x1 and back: the X
        // server tells of both sizes later, so the size is waited for, never
        // read at once.
        WindowController::showWaterView();
        QCOMPARE(m_backend->waterWindow(), window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QTRY_COMPARE(window->geometry(), place);
        WindowController::closeWaterView();
        QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), kFadeWait);
    }

    void translucentOnlyWithACompositor()
    {
        // The first window was made without a compositor: opaque.
        QQuickView *opaque = m_backend->waterWindow();
        QCOMPARE(opaque->rootObject()->property("translucent").toBool(), false);

        CompositorSelection compositor;
        QmlWindowBackend other;
        QQuickView *seeThrough = other.waterWindow();
        QCOMPARE(seeThrough->rootObject()->property("translucent").toBool(), true);
        other.showWaterView();
        QTRY_VERIFY(seeThrough->isExposed());
        // An ARGB visual, so that the compositor can blend it.
        const QImage frame = seeThrough->grabWindow();
        QVERIFY(frame.hasAlphaChannel());
        QCOMPARE(qAlpha(frame.pixel(0, 0)), 0); // outside the rounded corner
        QVERIFY(qAlpha(frame.pixel(140, 165)) > 0);
    }

    void aZeroTargetStopsTheProgram()
    {
        QTemporaryDir home;
        const auto child = TestSupport::runChild(QStringLiteral("zero-target"), home.path());
        QCOMPARE(child.status, QProcess::CrashExit);
        // The child runs on the real clock: its log is named after today.
        const QDir logs(home.path() + QStringLiteral("/cache/narv/Logs"));
        const QStringList files = logs.entryList({QStringLiteral("app.narv.Narv.*.log")});
        const QByteArray text = TestSupport::readFile(logs.filePath(files.value(0)));
        // 0 / 0: NaN, printed "nan" or "-nan".
        static const QRegularExpression line(QStringLiteral(
            " critical app\\.narv\\.Narv : Fatal error: the water panel cannot show -?nan as a "
            "whole per cent \\(pref\\.water\\.target is 0\\)\n"));
        QVERIFY2(line.match(QString::fromUtf8(text)).hasMatch(), text.constData());
    }

private:
    std::optional<ScratchHome> m_home;
    WindowsOf<QmlWindowBackend> m_windows;
    QmlWindowBackend *m_backend = &m_windows.windows;
};

namespace {
// Opens the panel with a target of 0 and nothing drunk: 0 / 0.
int zeroTargetChild(int argc, char **argv)
{
    // The scratch home first: making the application may already log.
    ScratchHome home;
    installQtMessageRouting();
    QGuiApplication app(argc, argv);
    AppState::waterState()->setTarget(0);
    WindowsOf<QmlWindowBackend> windows;
    WindowController::showWaterView();
    return 0; // not reached when the stop works
}
} // namespace

int main(int argc, char **argv)
{
    const int child = TestSupport::runChildMode(
        argc, argv, {{"zero-target", [&] { return zeroTargetChild(argc, argv); }}});
    if (child >= 0)
        return child;
    QGuiApplication app(argc, argv);
    TestWaterWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_waterwindow.moc"
