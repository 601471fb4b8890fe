#include "platform/windowhints/X11WindowHints.h"

#include <QByteArray>
#include <QList>
#include <QWindow>

#include <xcb/xcb.h>

#include <cstdlib>

namespace {

xcb_atom_t internAtom(xcb_connection_t *c, const char *name)
{
    const QByteArray bytes(name);
    auto cookie = xcb_intern_atom(c, 0, uint16_t(bytes.size()), bytes.constData());
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(c, cookie, nullptr);
    if (!reply)
        return XCB_ATOM_NONE;
    const xcb_atom_t atom = reply->atom;
    std::free(reply);
    return atom;
}

QList<xcb_atom_t> atomList(xcb_connection_t *c, xcb_window_t window, xcb_atom_t property)
{
    QList<xcb_atom_t> atoms;
    auto cookie = xcb_get_property(c, 0, window, property, XCB_ATOM_ATOM, 0, 1024);
    xcb_get_property_reply_t *reply = xcb_get_property_reply(c, cookie, nullptr);
    if (!reply)
        return atoms;
    if (reply->format == 32 && reply->type == XCB_ATOM_ATOM) {
        const auto *data = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply));
        const int count = xcb_get_property_value_length(reply) / int(sizeof(xcb_atom_t));
        for (int i = 0; i < count; ++i)
            atoms.append(data[i]);
    }
    std::free(reply);
    return atoms;
}

// Asks the window manager to change a state of a window that is already
// mapped; the property alone only counts before the window is mapped.
void sendStateMessage(xcb_connection_t *c, xcb_window_t root, xcb_window_t window, xcb_atom_t type,
                      const uint32_t (&data)[5])
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    for (int i = 0; i < 5; ++i)
        event.data.data32[i] = data[i];
    xcb_send_event(c, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
}

} // namespace

X11WindowHints::X11WindowHints(xcb_connection_t *connection) : m_connection(connection)
{
}

void X11WindowHints::setOnAllDesktops(QWindow *window)
{
    xcb_connection_t *c = m_connection;
    const auto id = xcb_window_t(window->winId()); // creates the native window if needed

    const xcb_atom_t desktop = internAtom(c, "_NET_WM_DESKTOP");
    const xcb_atom_t state = internAtom(c, "_NET_WM_STATE");
    const xcb_atom_t wanted[] = {internAtom(c, "_NET_WM_STATE_STICKY"),
                                 internAtom(c, "_NET_WM_STATE_SKIP_TASKBAR"),
                                 internAtom(c, "_NET_WM_STATE_SKIP_PAGER")};

    // 0xFFFFFFFF is "all desktops" in the EWMH.
    const uint32_t allDesktops = 0xFFFFFFFF;
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, id, desktop, XCB_ATOM_CARDINAL, 32, 1,
                        &allDesktops);

    // Keep what is there (Qt adds ABOVE and FULLSCREEN itself on show).
    QList<xcb_atom_t> atoms = atomList(c, id, state);
    for (xcb_atom_t atom : wanted) {
        if (atom != XCB_ATOM_NONE && !atoms.contains(atom))
            atoms.append(atom);
    }
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, id, state, XCB_ATOM_ATOM, 32,
                        uint32_t(atoms.size()), atoms.constData());

    if (window->isVisible()) {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
        sendStateMessage(c, root, id, desktop, {allDesktops, 1, 0, 0, 0});
        // _NET_WM_STATE_ADD = 1; two atoms per message, source indication 1.
        sendStateMessage(c, root, id, state, {1, wanted[0], 0, 1, 0});
        sendStateMessage(c, root, id, state, {1, wanted[1], wanted[2], 1, 0});
    }
    xcb_flush(c);
}
