#pragma once

#include "services/Notifier.h"

class NotificationsProxy;

// The session's notification server (org.freedesktop.Notifications).
class FreedesktopNotifier : public Notifier {
    Q_OBJECT
public:
    explicit FreedesktopNotifier(QObject *parent = nullptr);
    ~FreedesktopNotifier() override;

    void show(const QString &summary, const QList<Action> &actions) override;
    void withdraw() override;

private:
    NotificationsProxy *proxy();

    NotificationsProxy *m_proxy = nullptr;
    uint m_id = 0;            // the server's number of what we show; 0: nothing
    bool m_withdrawn = false; // withdrawn before the server said its number
};
