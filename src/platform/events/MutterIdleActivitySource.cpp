#include "platform/events/MutterIdleActivitySource.h"

#include "app/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

const QString MutterIdleActivitySource::service = QStringLiteral("org.gnome.Mutter.IdleMonitor");
const QString MutterIdleActivitySource::path = QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core");
const QString MutterIdleActivitySource::interface = QStringLiteral("org.gnome.Mutter.IdleMonitor");

bool MutterIdleActivitySource::isAvailable(const QDBusConnection &bus)
{
    return bus.isConnected() && bus.interface() &&
           bus.interface()->isServiceRegistered(service).value();
}

MutterIdleActivitySource::MutterIdleActivitySource(const QDBusConnection &bus, QObject *parent)
    : IdleWatchActivitySource(parent), m_bus(bus),
      m_owner(service, bus, QDBusServiceWatcher::WatchForRegistration)
{
}

bool MutterIdleActivitySource::start()
{
    // A restarted Mutter has forgotten our watches.
    connect(&m_owner, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        LOG_INFO(QStringLiteral("mouse activity: the idle monitor came back"));
        addWatches();
    });
    if (!m_bus.connect(service, path, interface, QStringLiteral("WatchFired"), this,
                       SLOT(onWatchFired(uint)))) {
        LOG_WARNING(QStringLiteral("mouse activity: cannot listen to the idle monitor: %1")
                        .arg(m_bus.lastError().message()));
        return false;
    }
    addWatches();
    return true;
}

void MutterIdleActivitySource::addWatches()
{
    m_idleWatch = 0;
    m_activeWatch = 0;
    m_activeWatchPending = false;
    m_firedEarly = 0;

    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("AddIdleWatch"));
    call << quint64(idleThresholdMs);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusPendingReply<uint> reply = *w;
        if (reply.isError()) {
            LOG_WARNING(QStringLiteral("mouse activity: the idle monitor refused a watch: %1")
                            .arg(reply.error().message()));
            return;
        }
        m_idleWatch = reply.value();
    });
    // Whether the user is at the machine right now is unknown: wait for their
    // next input. Until then the idle stop armed at start-up runs its course.
    addUserActiveWatch();
}

void MutterIdleActivitySource::addUserActiveWatch()
{
    if (m_activeWatch != 0 || m_activeWatchPending)
        return;
    m_activeWatchPending = true;
    const QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface,
                                                             QStringLiteral("AddUserActiveWatch"));
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        m_activeWatchPending = false;
        const QDBusPendingReply<uint> reply = *w;
        if (reply.isError()) {
            LOG_WARNING(QStringLiteral("mouse activity: the idle monitor refused a watch: %1")
                            .arg(reply.error().message()));
            return;
        }
        m_activeWatch = reply.value();
        if (m_firedEarly == m_activeWatch)
            onWatchFired(m_firedEarly);
    });
}

void MutterIdleActivitySource::onWatchFired(uint id)
{
    // Every client's watches fire on the same path; only ours count.
    if (id == 0)
        return;
    if (id == m_idleWatch) {
        userBecameIdle();
        addUserActiveWatch();
    } else if (id == m_activeWatch) {
        m_activeWatch = 0; // one-shot: Mutter has removed it
        m_firedEarly = 0;
        userBecameActive();
    } else if (m_activeWatchPending) {
        m_firedEarly = id;
    }
}
