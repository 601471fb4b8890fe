// Windows closed from outside: by the window manager (WM_DELETE_WINDOW, as a
// close button, Alt+F4 or a dock's menu sends it on X11) or, on Wayland, by a
// close that comes in the way the compositor's does. Run on a private X server
// (tests/run-on-xvfb) and on a headless Wayland compositor
// (tests/run-on-weston). Each window is only hidden, as by its own close,
// survives the release of its backing store that follows, and shows again;
// a quit still closes them all.

#include "FakeWindows.h"
#include "LogTail.h"
#include "TestSupport.h"

#include "app/Clock.h"
#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <xcb/xcb.h>

#include <cstdlib>
#include <optional>

namespace {
constexpr int kFadeWait = QmlWindowBackend::fadeMilliseconds * 5;

bool onX11()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

xcb_atom_t atom(xcb_connection_t *c, const char *name)
{
    xcb_intern_atom_reply_t *reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(qstrlen(name)), name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

// What the desktop does when the user closes the window.
void closeFromOutside(QWindow *window)
{
    if (!onX11()) {
        // The compositor's close (xdg_toplevel.close) and QWindow::close()
        // reach the window as the same QCloseEvent.
        window->close();
        return;
    }
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *c = x11->connection();
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = xcb_window_t(window->winId());
    event.type = atom(c, "WM_PROTOCOLS");
    event.data.data32[0] = atom(c, "WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(c, 0, event.window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(c);
}
} // namespace

class TestWindowClose : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_home.emplace();
        PreferencesStore::instance().clear();
        // Inside the water panel's working hours, whatever the hour.
        Clock::setNowSource([] { return QDateTime(QDate(2026, 11, 23), QTime(10, 0)); });
    }

    void closedItHidesAndComesBack_data()
    {
        QTest::addColumn<QString>("window");
        QTest::newRow("settings") << QStringLiteral("settings");
        QTest::newRow("water panel") << QStringLiteral("water");
        QTest::newRow("about") << QStringLiteral("about");
    }

    void closedItHidesAndComesBack()
    {
        QFETCH(QString, window);
        const auto show = [&] {
            if (window == QLatin1String("settings"))
                WindowController::showPrefView();
            else if (window == QLatin1String("water"))
                WindowController::showWaterView();
            else
                WindowController::showAbout();
        };
        show();
        QQuickView *view = window == QLatin1String("settings") ? m_backend->preferencesWindow()
                           : window == QLatin1String("water")  ? m_backend->waterWindow()
                                                               : m_backend->aboutWindow();
        QVERIFY(QTest::qWaitForWindowExposed(view));

        closeFromOutside(view);
        QTRY_VERIFY_WITH_TIMEOUT(!view->isVisible(), kFadeWait);
        QVERIFY(!m_backend->isWaterViewVisible());
        // Hidden, not destroyed: the native window is kept for the next showing.
        QVERIFY(view->handle());
        // The backing store is released from a queued slot; run it now.
        QCoreApplication::sendPostedEvents(view, QEvent::MetaCall);

        show();
        QVERIFY(QTest::qWaitForWindowExposed(view));
        QVERIFY(view->isVisible());
        view->hide();
        QCoreApplication::sendPostedEvents(view, QEvent::MetaCall);
    }

    void aBreakWindowStaysUntilTheBreakEnds()
    {
        WindowController::showBreak();
        QQuickView *view = m_backend->breakWindow(QGuiApplication::primaryScreen());
        QVERIFY(QTest::qWaitForWindowExposed(view));
        const QByteArray asked = "the desktop asked to close break window " +
                                 QmlWindowBackend::breakWindowTitle(view->screen()).toUtf8();
        const int before = LogTail::count(asked);
        closeFromOutside(view);
        QTRY_COMPARE(LogTail::count(asked), before + 1);
        QCoreApplication::sendPostedEvents(view, QEvent::MetaCall);
        QVERIFY(view->isVisible());
        QVERIFY(view->handle());
        WindowController::closeBreak();
        QTRY_VERIFY_WITH_TIMEOUT(!view->isVisible(), kFadeWait);
    }

    // Last: Qt closes every window before it quits, and one that stayed
    // would keep the program from quitting.
    void quittingClosesEveryWindow()
    {
        WindowController::showPrefView();
        QVERIFY(QTest::qWaitForWindowExposed(m_backend->preferencesWindow()));
        // quit() needs the application's loop running; exit() ends it without
        // asking the windows, should the quit be called off.
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(1); });
        QCOMPARE(QCoreApplication::exec(), 0);
        for (QWindow *window : QGuiApplication::topLevelWindows())
            QVERIFY2(!window->handle(), qPrintable(window->title()));
    }

private:
    std::optional<TestSupport::ScratchHome> m_home;
    WindowsOf<QmlWindowBackend> m_windows;
    QmlWindowBackend *m_backend = &m_windows.windows;
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestWindowClose test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowclose.moc"
