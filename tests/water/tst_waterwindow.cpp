// The water panel's window, made by the Qt Quick window backend on a private X
// server with two monitors (tests/run-on-xvfb): its place and the fades when
// the menu toggles it. The program as a whole on real shells is make
// test-desktops.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "app/Clock.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

#include <QQuickView>
#include <QTest>

namespace {
// Longer than a fade, so that waiting for one to end never fails on a busy machine.
constexpr int kFadeWait = QmlWindowBackend::fadeMilliseconds * 5;
} // namespace

class TestWaterWindow : public QObject {
    Q_OBJECT

    TestSupport::ScratchHome m_home;
    WindowsOf<QmlWindowBackend> m_windows;
    QmlWindowBackend *m_backend = &m_windows.windows;

private Q_SLOTS:
    void initTestCase()
    {
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
};

QTEST_MAIN(TestWaterWindow)

#include "tst_waterwindow.moc"
