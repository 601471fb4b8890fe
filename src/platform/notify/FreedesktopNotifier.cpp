#include "platform/notify/FreedesktopNotifier.h"

#include "app/AppInfo.h"
#include "app/Log.h"
#include "notifications_proxy.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>

FreedesktopNotifier::FreedesktopNotifier(QObject *parent) : Notifier(parent)
{
}

FreedesktopNotifier::~FreedesktopNotifier()
{
    withdraw();
}

NotificationsProxy *FreedesktopNotifier::proxy()
{
    if (m_proxy)
        return m_proxy;
    m_proxy = new NotificationsProxy(QStringLiteral("org.freedesktop.Notifications"),
                                     QStringLiteral("/org/freedesktop/Notifications"),
                                     QDBusConnection::sessionBus(), this);
    connect(m_proxy, &NotificationsProxy::ActionInvoked, this, [this](uint id, const QString &key) {
        if (id != m_id || id == 0)
            return;
        m_id = 0;
        Q_EMIT actionInvoked(key);
    });
    connect(m_proxy, &NotificationsProxy::NotificationClosed, this, [this](uint id, uint) {
        if (id != m_id || id == 0)
            return;
        m_id = 0;
        Q_EMIT closed();
    });
    return m_proxy;
}

void FreedesktopNotifier::show(const QString &summary, const QList<Action> &actions)
{
    QStringList pairs;
    for (const Action &action : actions)
        pairs << action.key << action.label;
    QVariantMap hints;
    hints.insert(QStringLiteral("desktop-entry"), AppInfo::identifier());
    hints.insert(QStringLiteral("category"), QStringLiteral("presence"));
    m_withdrawn = false;
    // Asynchronous: the countdown never waits for the server.
    auto *watcher =
        new QDBusPendingCallWatcher(proxy()->Notify(AppInfo::name(), m_id, QStringLiteral("narv"),
                                                    summary, QString(), pairs, hints, -1),
                                    this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError()) {
            LOG_WARNING(QStringLiteral("heads-up: the notification server refused it (%1)")
                            .arg(reply.error().message()));
            Q_EMIT closed();
            return;
        }
        m_id = reply.value();
        if (m_withdrawn)
            withdraw();
    });
}

void FreedesktopNotifier::withdraw()
{
    m_withdrawn = true;
    if (m_id == 0 || !m_proxy)
        return;
    m_proxy->CloseNotification(m_id);
    m_id = 0;
}
