#include "platform/notify/SessionNotifier.h"

#include "app/Log.h"
#include "platform/notify/FreedesktopNotifier.h"
#include "platform/notify/PortalNotifier.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace {
bool onTheBus(const QString &name)
{
    QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    return bus && (bus->isServiceRegistered(name).value() ||
                   bus->activatableServiceNames().value().contains(name));
}

std::unique_ptr<Notifier> choose()
{
    if (onTheBus(QStringLiteral("org.freedesktop.Notifications")) ||
        !onTheBus(QStringLiteral("org.freedesktop.portal.Desktop")))
        return std::make_unique<FreedesktopNotifier>();
    LOG_INFO(QStringLiteral("heads-up: through the Notification portal (the bus does not show "
                            "org.freedesktop.Notifications)"));
    return std::make_unique<PortalNotifier>();
}
} // namespace

SessionNotifier::~SessionNotifier() = default;

void SessionNotifier::show(const QString &summary, const QList<Action> &actions)
{
    if (!m_chosen) {
        m_chosen = choose();
        connect(m_chosen.get(), &Notifier::actionInvoked, this, &Notifier::actionInvoked);
        connect(m_chosen.get(), &Notifier::closed, this, &Notifier::closed);
    }
    m_chosen->show(summary, actions);
}

void SessionNotifier::withdraw()
{
    if (m_chosen)
        m_chosen->withdraw();
}
