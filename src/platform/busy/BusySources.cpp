#include "platform/busy/BusySources.h"

#include "app/BreakDeferral.h"
#include "services/BusySource.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>

#include <xcb/xcb.h>

#include <cstdlib>

namespace {
// A short call: a break is due and the answer is wanted now.
constexpr int callTimeoutMs = 300;

bool ask(const char *service, const char *path, const char *interface, const char *method,
         const QVariantList &arguments = {})
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                       QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    const QDBusReply<bool> reply =
        QDBusConnection::sessionBus().call(call, QDBus::Block, callTimeoutMs);
    return reply.isValid() && reply.value();
}

class InhibitorSource : public BusySource {
public:
    QString busyReason() override
    {
        // 8: inhibits the session being marked idle (a call, a video).
        if (ask("org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
                "IsInhibited", {8u}))
            return QStringLiteral("an application inhibits idleness (GNOME session)");
        if (ask("org.freedesktop.PowerManagement.Inhibit",
                "/org/freedesktop/PowerManagement/Inhibit",
                "org.freedesktop.PowerManagement.Inhibit", "HasInhibit"))
            return QStringLiteral("an application inhibits the screensaver");
        return {};
    }
};

class X11FullscreenSource : public BusySource {
public:
    ~X11FullscreenSource() override
    {
        if (m_connection)
            xcb_disconnect(m_connection);
    }

    QString busyReason() override
    {
        if (!connect())
            return {};
        const xcb_window_t active = property(m_root, m_activeWindow).value(0);
        if (active == XCB_NONE)
            return {};
        if (property(active, m_state).contains(m_fullscreen))
            return QStringLiteral("the focused window is full screen");
        return {};
    }

private:
    bool connect()
    {
        if (m_connection)
            return !xcb_connection_has_error(m_connection);
        m_connection = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_connection))
            return false;
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        m_activeWindow = atom("_NET_ACTIVE_WINDOW");
        m_state = atom("_NET_WM_STATE");
        m_fullscreen = atom("_NET_WM_STATE_FULLSCREEN");
        return true;
    }

    xcb_atom_t atom(const char *name)
    {
        const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(qstrlen(name)), name);
        xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(m_connection, cookie, nullptr);
        const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(reply);
        return atom;
    }

    // The 32-bit values of a window's property, whatever type its setter gave it.
    QList<quint32> property(xcb_window_t window, xcb_atom_t name)
    {
        QList<quint32> values;
        const auto cookie =
            xcb_get_property(m_connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
        xcb_get_property_reply_t *reply = xcb_get_property_reply(m_connection, cookie, nullptr);
        if (reply && reply->format == 32) {
            const auto *data = static_cast<const quint32 *>(xcb_get_property_value(reply));
            const int count = xcb_get_property_value_length(reply) / 4;
            for (int i = 0; i < count; ++i)
                values.append(data[i]);
        }
        std::free(reply);
        return values;
    }

    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    xcb_atom_t m_activeWindow = XCB_ATOM_NONE;
    xcb_atom_t m_state = XCB_ATOM_NONE;
    xcb_atom_t m_fullscreen = XCB_ATOM_NONE;
};
} // namespace

void BusySources::install()
{
    BreakDeferral::addSource(std::make_unique<InhibitorSource>());
    // Wayland does not let one client see another's windows.
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") && !qEnvironmentVariableIsEmpty("DISPLAY"))
        BreakDeferral::addSource(std::make_unique<X11FullscreenSource>());
}
