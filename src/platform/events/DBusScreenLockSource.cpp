#include "platform/events/DBusScreenLockSource.h"

#include "app/Log.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {
const QString login1Service = QStringLiteral("org.freedesktop.login1");
const QString login1Path = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString lockedHint = QStringLiteral("LockedHint");
} // namespace

const QStringList &DBusScreenLockSource::screenSaverInterfaces()
{
    static const QStringList interfaces = {
        QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("org.gnome.ScreenSaver"),
        QStringLiteral("org.cinnamon.ScreenSaver"),    QStringLiteral("org.mate.ScreenSaver"),
        QStringLiteral("org.xfce.ScreenSaver"),
    };
    return interfaces;
}

DBusScreenLockSource::DBusScreenLockSource(const QDBusConnection &sessionBus,
                                           const QDBusConnection &systemBus, QObject *parent)
    : ScreenLockSource(parent), m_sessionBus(sessionBus), m_systemBus(systemBus)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleMs);
    connect(&m_settle, &QTimer::timeout, this, &DBusScreenLockSource::settle);
}

void DBusScreenLockSource::start()
{
    if (m_sessionBus.isConnected()) {
        // Any sender and any path: the services are often not the owners of
        // these names (KDE's screen locker), and they differ in the path
        // (/ScreenSaver, /org/freedesktop/ScreenSaver, /org/gnome/ScreenSaver).
        for (const QString &interface : screenSaverInterfaces()) {
            if (!m_sessionBus.connect(QString(), QString(), interface,
                                      QStringLiteral("ActiveChanged"), this,
                                      SLOT(onActiveChanged(bool, QDBusMessage))))
                LOG_WARNING(QStringLiteral("screen lock: cannot listen to %1.ActiveChanged: %2")
                                .arg(interface, m_sessionBus.lastError().message()));
        }
    } else {
        LOG_NOTICE(QStringLiteral("screen lock: no session bus, screensaver signals are not seen"));
    }

    if (m_systemBus.isConnected())
        findSession();
    else
        LOG_NOTICE(QStringLiteral("screen lock: no system bus, logind's lock state is not seen"));
}

void DBusScreenLockSource::findSession()
{
    QDBusMessage call = QDBusMessage::createMethodCall(login1Service, login1Path, managerInterface,
                                                       QStringLiteral("GetSessionByPID"));
    call << uint(QCoreApplication::applicationPid());
    auto *watcher = new QDBusPendingCallWatcher(m_systemBus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *w;
        if (reply.isError()) {
            // Started by a user service manager rather than from the
            // session itself; the session's id may still be known.
            findSessionById();
            return;
        }
        watchSession(reply.value());
    });
}

void DBusScreenLockSource::findSessionById()
{
    const QString id = qEnvironmentVariable("XDG_SESSION_ID");
    if (id.isEmpty()) {
        LOG_NOTICE(QStringLiteral("screen lock: not in a logind session, only screensaver "
                                  "signals are seen"));
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(login1Service, login1Path, managerInterface,
                                                       QStringLiteral("GetSession"));
    call << id;
    auto *watcher = new QDBusPendingCallWatcher(m_systemBus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, id](QDBusPendingCallWatcher *w) {
                w->deleteLater();
                const QDBusPendingReply<QDBusObjectPath> reply = *w;
                if (reply.isError()) {
                    LOG_NOTICE(QStringLiteral("screen lock: logind does not know session \"%1\" "
                                              "(%2), only screensaver signals are seen")
                                   .arg(id, reply.error().message()));
                    return;
                }
                watchSession(reply.value());
            });
}

void DBusScreenLockSource::watchSession(const QDBusObjectPath &path)
{
    m_sessionPath = path.path();
    if (!m_systemBus.connect(login1Service, m_sessionPath, propertiesInterface,
                             QStringLiteral("PropertiesChanged"), this,
                             SLOT(onSessionPropertiesChanged(QString, QVariantMap, QStringList))))
        LOG_WARNING(QStringLiteral("screen lock: cannot listen to logind session %1: %2")
                        .arg(m_sessionPath, m_systemBus.lastError().message()));
}

void DBusScreenLockSource::onActiveChanged(bool active, const QDBusMessage &message)
{
    LOG_DEBUG(QStringLiteral("screen lock: %1 %2 says %3")
                  .arg(message.interface(), message.path(),
                       active ? QStringLiteral("active") : QStringLiteral("inactive")));
    report(active);
}

void DBusScreenLockSource::onSessionPropertiesChanged(const QString &interface,
                                                      const QVariantMap &changed,
                                                      const QStringList &invalidated)
{
    if (interface != sessionInterface)
        return;
    if (const auto it = changed.constFind(lockedHint); it != changed.cend()) {
        LOG_DEBUG(
            QStringLiteral("screen lock: logind says LockedHint %1").arg(it.value().toBool()));
        report(it.value().toBool());
    } else if (invalidated.contains(lockedHint)) {
        readLockedHint();
    }
}

void DBusScreenLockSource::readLockedHint()
{
    QDBusMessage call = QDBusMessage::createMethodCall(login1Service, m_sessionPath,
                                                       propertiesInterface, QStringLiteral("Get"));
    call << sessionInterface << lockedHint;
    auto *watcher = new QDBusPendingCallWatcher(m_systemBus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *w;
        if (reply.isError()) {
            LOG_WARNING(QStringLiteral("screen lock: cannot read LockedHint: %1")
                            .arg(reply.error().message()));
            return;
        }
        report(reply.value().variant().toBool());
    });
}

void DBusScreenLockSource::report(bool locked)
{
    m_pending = locked;
    if (m_pending == m_locked)
        m_settle.stop(); // back where it was before anything was reported
    else if (!m_settle.isActive())
        m_settle.start();
}

void DBusScreenLockSource::settle()
{
    if (m_pending == m_locked)
        return;
    m_locked = m_pending;
    if (m_locked)
        Q_EMIT locked();
    else
        Q_EMIT unlocked();
}
