#pragma once

#include "platform/windowhints/WindowHints.h"

struct xcb_connection_t;

// EWMH hints set straight on the X window: _NET_WM_DESKTOP 0xFFFFFFFF and the
// _NET_WM_STATE atoms STICKY, SKIP_TASKBAR and SKIP_PAGER.
class X11WindowHints : public WindowHints {
public:
    explicit X11WindowHints(xcb_connection_t *connection);
    void setOnAllDesktops(QWindow *window) override;
    bool canFade() const override { return true; }

private:
    xcb_connection_t *m_connection;
};
