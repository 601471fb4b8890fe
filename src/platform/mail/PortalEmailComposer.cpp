#include "PortalEmailComposer.h"

#include "app/Log.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

void PortalEmailComposer::compose(const QString &recipient, const QString &subject,
                                  const QString &body, const QString &attachment)
{
    QVariantMap options{
        {QStringLiteral("address"), recipient}, // portal version 1 and 2
        {QStringLiteral("addresses"), QStringList{recipient}},
        {QStringLiteral("subject"), subject},
        {QStringLiteral("body"), body},
    };
    if (!attachment.isEmpty()) {
        const int fd = ::open(QFile::encodeName(attachment).constData(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0) {
            // The descriptor is duplicated into the message; ours can go at once.
            options.insert(
                QStringLiteral("attachment_fds"),
                QVariant::fromValue(QList<QDBusUnixFileDescriptor>{QDBusUnixFileDescriptor(fd)}));
            ::close(fd);
        } else {
            LOG_WARNING(QStringLiteral("the feedback mail goes without the log: cannot open ") +
                        attachment);
        }
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QString::fromLatin1(service), QString::fromLatin1(path), QString::fromLatin1(interface),
        QStringLiteral("ComposeEmail"));
    call << QString() << options; // no parent window: the request comes from the tray
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [](QDBusPendingCallWatcher *w) {
                         w->deleteLater();
                         const QDBusPendingReply<QDBusObjectPath> reply = *w;
                         if (reply.isError())
                             LOG_WARNING(QStringLiteral("the Email portal refused the feedback "
                                                        "mail: ") +
                                         reply.error().message());
                     });
}
