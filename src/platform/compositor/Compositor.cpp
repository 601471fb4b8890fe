#include "platform/compositor/Compositor.h"

#include <QByteArray>
#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>

namespace {

// The screen number of the display Narv runs on: "host:display.screen".
int defaultScreenNumber()
{
    const QByteArray display = qgetenv("DISPLAY");
    const int colon = display.lastIndexOf(':');
    const int dot = display.indexOf('.', colon);
    if (colon < 0 || dot < 0)
        return 0;
    bool ok = false;
    const int screen = display.mid(dot + 1).toInt(&ok);
    return ok ? screen : 0;
}

// An EWMH compositing manager owns the selection _NET_WM_CM_S<screen>.
bool x11CompositorRunning(xcb_connection_t *c)
{
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(defaultScreenNumber());
    auto atomCookie = xcb_intern_atom(c, 0, uint16_t(name.size()), name.constData());
    xcb_intern_atom_reply_t *atom = xcb_intern_atom_reply(c, atomCookie, nullptr);
    if (!atom)
        return false;
    auto ownerCookie = xcb_get_selection_owner(c, atom->atom);
    std::free(atom);
    xcb_get_selection_owner_reply_t *owner = xcb_get_selection_owner_reply(c, ownerCookie, nullptr);
    if (!owner)
        return false;
    const bool running = owner->owner != XCB_WINDOW_NONE;
    std::free(owner);
    return running;
}

} // namespace

bool Compositor::isRunning()
{
    if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        if (xcb_connection_t *c = x11->connection())
            return x11CompositorRunning(c);
        return false;
    }
    // A Wayland compositor is the display server itself. Other platforms
    // (offscreen, a VNC server) have nothing behind the window to show.
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}
