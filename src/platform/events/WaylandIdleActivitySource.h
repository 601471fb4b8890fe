#pragma once

#include "platform/events/IdleWatchActivitySource.h"

#include <memory>

class QSocketNotifier;
struct wl_display;
struct wl_registry;
struct wl_seat;
struct ext_idle_notifier_v1;
struct ext_idle_notification_v1;
struct org_kde_kwin_idle;
struct org_kde_kwin_idle_timeout;

// Activity on Wayland compositors other than GNOME's, from ext-idle-notify-v1
// over a connection of our own: a notification that goes idle after one
// second without input and reports when input resumes. The compositor counts
// every key and the wheel, and while a program inhibits idleness (a video
// player) it reports no idleness at all, so the user counts as active.
// Compositors from before ext-idle-notify-v1 (KWin 5, sway 1.7) offer the same
// as org_kde_kwin_idle, which is taken when the newer one is missing.
class WaylandIdleActivitySource : public IdleWatchActivitySource {
    Q_OBJECT
public:
    // Connects to the compositor in $WAYLAND_DISPLAY; null (after logging
    // why) when there is none or it offers neither protocol.
    static std::unique_ptr<WaylandIdleActivitySource> open();
    ~WaylandIdleActivitySource() override;

    bool start() override;
    // The protocol in use: "ext-idle-notify-v1" or "org_kde_kwin_idle".
    QString protocol() const;

    // Called by the protocol listeners.
    void onGlobal(wl_registry *registry, uint32_t name, const char *interface, uint32_t version);
    void onIdled();
    void onResumed();

private:
    WaylandIdleActivitySource() = default;
    void dispatch();

    wl_display *m_display = nullptr;
    wl_registry *m_registry = nullptr;
    wl_seat *m_seat = nullptr;
    ext_idle_notifier_v1 *m_notifier = nullptr;
    ext_idle_notification_v1 *m_notification = nullptr;
    org_kde_kwin_idle *m_kdeIdle = nullptr;
    org_kde_kwin_idle_timeout *m_kdeTimeout = nullptr;
    QSocketNotifier *m_socket = nullptr;
};
