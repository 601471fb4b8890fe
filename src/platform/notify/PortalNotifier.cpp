#include "platform/notify/PortalNotifier.h"

#include "app/Log.h"
#include "notification_portal_proxy.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>

namespace {
// One notification at a time: a new one replaces the one with the same id.
const QString notificationId = QStringLiteral("heads-up");
} // namespace

PortalNotifier::PortalNotifier(QObject *parent)
    : Notifier(parent),
      m_proxy(new NotificationPortalProxy(QStringLiteral("org.freedesktop.portal.Desktop"),
                                          QStringLiteral("/org/freedesktop/portal/desktop"),
                                          QDBusConnection::sessionBus(), this))
{
    qDBusRegisterMetaType<QList<QVariantMap>>();
    connect(m_proxy, &NotificationPortalProxy::ActionInvoked, this,
            [this](const QString &id, const QString &action, const QVariantList &) {
                if (id != notificationId || !m_shown)
                    return;
                m_shown = false;
                Q_EMIT actionInvoked(action);
            });
}

PortalNotifier::~PortalNotifier()
{
    withdraw();
}

void PortalNotifier::show(const QString &summary, const QList<Action> &actions)
{
    QList<QVariantMap> buttons;
    for (const Action &action : actions)
        buttons.append({{QStringLiteral("label"), action.label},
                        {QStringLiteral("action"), action.key}});
    QVariantMap notification{{QStringLiteral("title"), summary},
                             {QStringLiteral("priority"), QStringLiteral("high")}};
    if (!buttons.isEmpty())
        notification.insert(QStringLiteral("buttons"), QVariant::fromValue(buttons));
    m_shown = true;
    // Asynchronous: the countdown never waits for the portal.
    auto *watcher = new QDBusPendingCallWatcher(
        m_proxy->AddNotification(notificationId, notification), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (!watcher->isError())
            return;
        LOG_WARNING(QStringLiteral("heads-up: the Notification portal refused it (%1)")
                        .arg(watcher->error().message()));
        m_shown = false;
        Q_EMIT closed();
    });
}

void PortalNotifier::withdraw()
{
    if (!m_shown)
        return;
    m_shown = false;
    m_proxy->RemoveNotification(notificationId);
}
