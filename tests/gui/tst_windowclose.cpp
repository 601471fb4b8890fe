// Windows closed from outside: by the window manager on X11 (WM_DELETE_WINDOW,
// as a close button or Alt+F4 sends it; tests/run-on-xvfb) and by the
// compositor on Wayland (tests/run-on-weston). The window is only hidden, as by
// its own close, survives the release of its backing store that follows, and
// shows again.

#include "FakeWindows.h"
#include "TestSupport.h"

#include "settings/PreferencesStore.h"
#include "windows/QmlWindowBackend.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QTest>

#include <xcb/xcb.h>

#include <cstdlib>

namespace {
xcb_atom_t atom(xcb_connection_t *c, const char *name)
{
    xcb_intern_atom_reply_t *reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(qstrlen(name)), name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

void closeFromOutside(QWindow *window)
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11) {
        // The compositor's close (xdg_toplevel.close) and QWindow::close()
        // reach the window as the same QCloseEvent.
        window->close();
        return;
    }
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

    TestSupport::ScratchHome m_home;
    WindowsOf<QmlWindowBackend> m_windows;

private Q_SLOTS:
    // The settings window, as the menu and a second start show it.
    void closedItHidesAndComesBack()
    {
        PreferencesStore::instance().clear();
        WindowController::showPrefView();
        QQuickView *view = m_windows.windows.preferencesWindow();
        QVERIFY(QTest::qWaitForWindowExposed(view));
        closeFromOutside(view);
        QTRY_VERIFY_WITH_TIMEOUT(!view->isVisible(), QmlWindowBackend::fadeMilliseconds * 5);
        QVERIFY(view->handle()); // hidden, not destroyed
        // The backing store is released from a queued slot; run it now.
        QCoreApplication::sendPostedEvents(view, QEvent::MetaCall);
        WindowController::showPrefView();
        QVERIFY(QTest::qWaitForWindowExposed(view));
    }
};

QTEST_MAIN(TestWindowClose)

#include "tst_windowclose.moc"
