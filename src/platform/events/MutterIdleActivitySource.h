#pragma once

#include "platform/events/IdleWatchActivitySource.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

// Activity on GNOME (X11 or Wayland) from Mutter's idle monitor: an idle
// watch of one second and, after it fires, a one-shot watch for the user's
// return. Mutter counts every key and the wheel, so this cannot tell mouse
// activity from typing.
class MutterIdleActivitySource : public IdleWatchActivitySource {
    Q_OBJECT
public:
    static const QString service;
    static const QString path;
    static const QString interface;

    // True when the bus has the idle monitor.
    static bool isAvailable(const QDBusConnection &bus);

    explicit MutterIdleActivitySource(const QDBusConnection &bus, QObject *parent = nullptr);
    bool start() override;

private Q_SLOTS:
    void onWatchFired(uint id);

private:
    void addWatches();
    void addUserActiveWatch();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_owner;
    uint m_idleWatch = 0;
    uint m_activeWatch = 0;
    bool m_activeWatchPending = false;
    // A watch that fired before the reply that gave us its id arrived.
    uint m_firedEarly = 0;
};
