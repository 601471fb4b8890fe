#pragma once

#include "services/Notifier.h"

class NotificationPortalProxy;

// The Notification portal (org.freedesktop.portal.Notification), for a
// sandbox that lets the portals through but not the notification server.
// The portal does not say when the user dismisses a notification: closed()
// comes only when the portal refuses one.
class PortalNotifier : public Notifier {
    Q_OBJECT
public:
    explicit PortalNotifier(QObject *parent = nullptr);
    ~PortalNotifier() override;

    void show(const QString &summary, const QList<Action> &actions) override;
    void withdraw() override;

private:
    NotificationPortalProxy *m_proxy;
    bool m_shown = false;
};
