#include "platform/instance/SingleInstance.h"

#include "ApplicationAdaptor.h"
#include "app/AppInfo.h"
#include "app/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
QString runtimeFolder()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty())
        dir = QDir::tempPath();
    return dir;
}

// The socket's address; false (with the reason) when the path does not fit.
bool socketAddress(sockaddr_un &address, QString *error)
{
    const QByteArray path = QFile::encodeName(SingleInstance::socketPath());
    if (path.size() >= qsizetype(sizeof address.sun_path)) {
        *error = QStringLiteral("the path %1 is too long for a socket")
                     .arg(SingleInstance::socketPath());
        return false;
    }
    address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    return true;
}

// What this start was given by its launcher, for the running Narv: on
// Wayland the activation token that lets it bring its window forward, on X11
// the startup notification's id.
QVariantMap launchPlatformData(const QString &token)
{
    QVariantMap data;
    if (!token.isEmpty())
        data.insert(QStringLiteral("activation-token"), token);
    const QString startupId = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    if (!startupId.isEmpty())
        data.insert(QStringLiteral("desktop-startup-id"), startupId);
    return data;
}

QString lastError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}
} // namespace

SingleInstance::SingleInstance(QObject *parent) : QObject(parent)
{
    new ApplicationAdaptor(this);
}

SingleInstance::~SingleInstance()
{
    if (m_listener < 0)
        return;
    delete m_notifier;
    ::close(m_listener);
    ::unlink(QFile::encodeName(socketPath()).constData());
}

QString SingleInstance::serviceName()
{
    return AppInfo::identifier();
}

QString SingleInstance::objectPath()
{
    return QStringLiteral("/app/narv/Narv");
}

QString SingleInstance::socketPath()
{
    // The runtime folder is the user's own; the temporary folder, where it
    // is missing, is shared, hence the user id.
    return QStringLiteral("%1/%2-%3.socket")
        .arg(runtimeFolder(), AppInfo::identifier())
        .arg(::getuid());
}

SingleInstance::Claim SingleInstance::claim()
{
    // The launcher's activation token goes to the running Narv when there is
    // one. A token is good for one activation, and a first start opens no
    // window: left in the environment, it would only reach the window process
    // stale, and be taken there instead of a fresh one.
    m_launchToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    if (QDBusConnection::sessionBus().isConnected())
        return claimOnBus();
    LOG_NOTICE(QStringLiteral("no session bus: one instance is kept by a lock file"));
    return claimWithLockFile();
}

SingleInstance::Claim SingleInstance::claimOnBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.registerObject(objectPath(), this);
    const auto reply =
        bus.interface()->registerService(serviceName(), QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Claim::First;

    bus.unregisterObject(objectPath());
    QDBusMessage call = QDBusMessage::createMethodCall(
        serviceName(), objectPath(), QStringLiteral("org.freedesktop.Application"),
        QStringLiteral("Activate"));
    call << launchPlatformData(m_launchToken);
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
        listen();
        return Claim::First;
    }
    sockaddr_un address;
    QString error;
    if (socketAddress(address, &error)) {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        // A local connect succeeds or fails at once: nothing to wait for.
        const bool reached =
            fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        if (!reached)
            error = lastError();
        if (fd >= 0)
            ::close(fd);
        if (reached)
            return Claim::HandedOver;
    }
    LOG_WARNING(QStringLiteral("another Narv holds the lock but does not answer (%1)").arg(error));
    return Claim::Failed;
}

void SingleInstance::listen()
{
    sockaddr_un address;
    QString error;
    if (socketAddress(address, &error)) {
        // We hold the lock: a socket file left there is a crashed Narv's.
        ::unlink(address.sun_path);
        m_listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (m_listener < 0 ||
            ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
            ::listen(m_listener, 4) != 0) {
            error = lastError();
            if (m_listener >= 0)
                ::close(m_listener);
            m_listener = -1;
        }
    }
    if (m_listener < 0) {
        LOG_WARNING(QStringLiteral("cannot listen for a second start: %1").arg(error));
        return;
    }
    m_notifier = new QSocketNotifier(m_listener, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SingleInstance::acceptAll);
}

void SingleInstance::acceptAll()
{
    // A second start connects and hangs up: each connection is one request.
    int fd;
    while ((fd = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        ::close(fd);
        Activate({});
    }
}

void SingleInstance::Activate(const QVariantMap &platformData)
{
    LOG_INFO(QStringLiteral("another start of Narv: showing the settings"));
    // Where Qt's Wayland platform takes it from when it next activates a
    // window: then the compositor lets the settings come forward instead of
    // leaving them behind the window in front.
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
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
