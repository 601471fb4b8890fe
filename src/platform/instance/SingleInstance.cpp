#include "platform/instance/SingleInstance.h"

#include "app/AppInfo.h"
#include "app/Log.h"
#include "ApplicationAdaptor.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

#include <unistd.h>

namespace {
QString runtimeFolder()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty())
        dir = QDir::tempPath();
    return dir;
}

QString socketName()
{
    return QStringLiteral("%1-%2").arg(AppInfo::identifier()).arg(::getuid());
}
} // namespace

SingleInstance::SingleInstance(QObject *parent) : QObject(parent)
{
    new ApplicationAdaptor(this);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            socket->deleteLater();
            Activate({});
        }
    });
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::serviceName()
{
    return AppInfo::identifier();
}

QString SingleInstance::objectPath()
{
    return QStringLiteral("/app/narv/Narv");
}

SingleInstance::Claim SingleInstance::claim()
{
    if (QDBusConnection::sessionBus().isConnected())
        return claimOnBus();
    LOG_NOTICE(QStringLiteral("no session bus: one instance is kept by a lock file"));
    return claimWithLockFile();
}

SingleInstance::Claim SingleInstance::claimOnBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.registerObject(objectPath(), this);
    const auto reply = bus.interface()->registerService(
        serviceName(), QDBusConnectionInterface::DontQueueService,
        QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Claim::First;

    bus.unregisterObject(objectPath());
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName(), objectPath(),
                                                      QStringLiteral("org.freedesktop.Application"),
                                                      QStringLiteral("Activate"));
    call << QVariantMap();
    const QDBusMessage answer = bus.call(call, QDBus::Block, 3000);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        LOG_WARNING(QStringLiteral("another Narv holds %1 but does not answer: %2")
                        .arg(serviceName(), answer.errorMessage()));
        return Claim::Failed;
    }
    return Claim::HandedOver;
}

SingleInstance::Claim SingleInstance::claimWithLockFile()
{
    m_lock = std::make_unique<QLockFile>(runtimeFolder() + QLatin1Char('/') +
                                         AppInfo::identifier() + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(0)) {
        QLocalServer::removeServer(socketName());
        if (!m_server.listen(socketName()))
            LOG_WARNING(QStringLiteral("cannot listen for a second start: %1").arg(m_server.errorString()));
        return Claim::First;
    }
    QLocalSocket socket;
    socket.connectToServer(socketName());
    if (!socket.waitForConnected(3000)) {
        LOG_WARNING(QStringLiteral("another Narv holds the lock but does not answer"));
        return Claim::Failed;
    }
    socket.disconnectFromServer();
    return Claim::HandedOver;
}

void SingleInstance::Activate(const QVariantMap &)
{
    LOG_INFO(QStringLiteral("another start of Narv: showing the settings"));
    Q_EMIT activated();
}

void SingleInstance::Open(const QStringList &, const QVariantMap &platformData)
{
    Activate(platformData);
}

void SingleInstance::ActivateAction(const QString &actionName, const QVariantList &,
                                    const QVariantMap &platformData)
{
    LOG_NOTICE(QStringLiteral("unknown action \"%1\"; showing the settings").arg(actionName));
    Activate(platformData);
}
