#include "platform/events/WaylandIdleActivitySource.h"

#include "app/Log.h"

#include <QSocketNotifier>

#include <cstring>
#include <wayland-client.h>

#include "ext-idle-notify-v1-client-protocol.h"
#include "kde-idle-client-protocol.h"

namespace {

void registryGlobal(void *data, wl_registry *registry, uint32_t name, const char *interface,
                    uint32_t version)
{
    static_cast<WaylandIdleActivitySource *>(data)->onGlobal(registry, name, interface, version);
}

void registryGlobalRemove(void *, wl_registry *, uint32_t)
{
}

const wl_registry_listener registryListener = {registryGlobal, registryGlobalRemove};

void notificationIdled(void *data, ext_idle_notification_v1 *)
{
    static_cast<WaylandIdleActivitySource *>(data)->onIdled();
}

void notificationResumed(void *data, ext_idle_notification_v1 *)
{
    static_cast<WaylandIdleActivitySource *>(data)->onResumed();
}

const ext_idle_notification_v1_listener notificationListener = {notificationIdled,
                                                                notificationResumed};

void kdeTimeoutIdle(void *data, org_kde_kwin_idle_timeout *)
{
    static_cast<WaylandIdleActivitySource *>(data)->onIdled();
}

void kdeTimeoutResumed(void *data, org_kde_kwin_idle_timeout *)
{
    static_cast<WaylandIdleActivitySource *>(data)->onResumed();
}

const org_kde_kwin_idle_timeout_listener kdeTimeoutListener = {kdeTimeoutIdle, kdeTimeoutResumed};

} // namespace

std::unique_ptr<WaylandIdleActivitySource> WaylandIdleActivitySource::open()
{
    std::unique_ptr<WaylandIdleActivitySource> source(new WaylandIdleActivitySource);
    source->m_display = wl_display_connect(nullptr);
    if (!source->m_display) {
        LOG_NOTICE(QStringLiteral("mouse activity: cannot connect to the Wayland compositor"));
        return nullptr;
    }
    source->m_registry = wl_display_get_registry(source->m_display);
    wl_registry_add_listener(source->m_registry, &registryListener, source.get());
    if (wl_display_roundtrip(source->m_display) < 0) {
        LOG_NOTICE(QStringLiteral("mouse activity: the Wayland compositor hung up"));
        return nullptr;
    }
    if ((!source->m_notifier && !source->m_kdeIdle) || !source->m_seat) {
        LOG_NOTICE(QStringLiteral("mouse activity: the Wayland compositor does not offer "
                                  "ext-idle-notify-v1 or org_kde_kwin_idle; mouse activity is "
                                  "not watched"));
        return nullptr;
    }
    // One is enough: the newer one where there are both.
    if (source->m_notifier && source->m_kdeIdle) {
        org_kde_kwin_idle_destroy(source->m_kdeIdle);
        source->m_kdeIdle = nullptr;
    }
    return source;
}

WaylandIdleActivitySource::~WaylandIdleActivitySource()
{
    delete m_socket;
    if (m_notification)
        ext_idle_notification_v1_destroy(m_notification);
    if (m_notifier)
        ext_idle_notifier_v1_destroy(m_notifier);
    if (m_kdeTimeout)
        org_kde_kwin_idle_timeout_release(m_kdeTimeout);
    if (m_kdeIdle)
        org_kde_kwin_idle_destroy(m_kdeIdle);
    if (m_seat)
        wl_seat_destroy(m_seat);
    if (m_registry)
        wl_registry_destroy(m_registry);
    if (m_display)
        wl_display_disconnect(m_display);
}

void WaylandIdleActivitySource::onGlobal(wl_registry *registry, uint32_t name,
                                         const char *interface, uint32_t version)
{
    // The first seat is the user's; a second one (rare) has its own idleness.
    if (!m_seat && std::strcmp(interface, wl_seat_interface.name) == 0) {
        m_seat = static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (!m_notifier && std::strcmp(interface, ext_idle_notifier_v1_interface.name) == 0) {
        m_notifier = static_cast<ext_idle_notifier_v1 *>(
            wl_registry_bind(registry, name, &ext_idle_notifier_v1_interface, 1));
    } else if (!m_kdeIdle && std::strcmp(interface, org_kde_kwin_idle_interface.name) == 0) {
        m_kdeIdle = static_cast<org_kde_kwin_idle *>(
            wl_registry_bind(registry, name, &org_kde_kwin_idle_interface, 1));
    }
}

QString WaylandIdleActivitySource::protocol() const
{
    return m_notifier ? QStringLiteral("ext-idle-notify-v1") : QStringLiteral("org_kde_kwin_idle");
}

bool WaylandIdleActivitySource::start()
{
    if (m_notifier) {
        m_notification =
            ext_idle_notifier_v1_get_idle_notification(m_notifier, idleThresholdMs, m_seat);
        ext_idle_notification_v1_add_listener(m_notification, &notificationListener, this);
    } else {
        m_kdeTimeout = org_kde_kwin_idle_get_idle_timeout(m_kdeIdle, m_seat, idleThresholdMs);
        org_kde_kwin_idle_timeout_add_listener(m_kdeTimeout, &kdeTimeoutListener, this);
    }
    if (wl_display_flush(m_display) < 0) {
        LOG_WARNING(QStringLiteral("mouse activity: the Wayland compositor hung up"));
        return false;
    }
    m_socket = new QSocketNotifier(wl_display_get_fd(m_display), QSocketNotifier::Read);
    connect(m_socket, &QSocketNotifier::activated, this, &WaylandIdleActivitySource::dispatch);
    // The compositor's idle timer starts now: idled comes within a second
    // unless the user is at it. Until then count them as active.
    userBecameActive();
    return true;
}

void WaylandIdleActivitySource::dispatch()
{
    if (wl_display_dispatch(m_display) < 0 || wl_display_flush(m_display) < 0) {
        LOG_WARNING(QStringLiteral("mouse activity: lost the Wayland compositor, activity is no "
                                   "longer seen"));
        m_socket->setEnabled(false);
    }
}

void WaylandIdleActivitySource::onIdled()
{
    userBecameIdle();
}

void WaylandIdleActivitySource::onResumed()
{
    userBecameActive();
}
