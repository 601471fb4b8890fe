#include "platform/views/MessageChannel.h"

#include "app/Log.h"

#include <QDataStream>
#include <QIODevice>
#include <QPointer>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
// Larger than any message the two processes exchange (the longest carries a
// release's title and two links); a longer one is refused when sent.
constexpr qsizetype maxMessageBytes = 64 * 1024;
} // namespace

MessageChannel::MessageChannel(int fd, QObject *parent) : QObject(parent), m_fd(fd)
{
    ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    m_readNotifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &MessageChannel::readAll);
    m_writeNotifier = new QSocketNotifier(m_fd, QSocketNotifier::Write, this);
    m_writeNotifier->setEnabled(false);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, [this] {
        if (flush())
            m_writeNotifier->setEnabled(false);
    });
}

MessageChannel::~MessageChannel()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool MessageChannel::makePair(int fds[2])
{
    return ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) == 0;
}

void MessageChannel::send(const QVariantList &message)
{
    if (m_fd < 0)
        return;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << message;
    if (bytes.size() > maxMessageBytes) {
        LOG_ERROR(
            QStringLiteral("a message to the other process is too long (%1 bytes): %2 not sent")
                .arg(bytes.size())
                .arg(message.value(0).toString()));
        return;
    }
    m_queue.append(bytes);
    if (!flush())
        m_writeNotifier->setEnabled(true);
}

// True when nothing is left waiting.
bool MessageChannel::flush()
{
    while (!m_queue.isEmpty() && m_fd >= 0) {
        const QByteArray &bytes = m_queue.constFirst();
        const ssize_t n = ::send(m_fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return false;
        if (n < 0) {
            close();
            return true;
        }
        m_queue.removeFirst();
    }
    return true;
}

void MessageChannel::readAll()
{
    QByteArray buffer(maxMessageBytes, Qt::Uninitialized);
    while (m_fd >= 0) {
        const ssize_t n = ::recv(m_fd, buffer.data(), size_t(buffer.size()), 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        if (n <= 0) {
            close();
            return;
        }
        QDataStream in(QByteArray::fromRawData(buffer.constData(), n));
        QVariantList message;
        in >> message;
        if (in.status() != QDataStream::Ok || message.isEmpty()) {
            LOG_ERROR(
                QStringLiteral("a message from the other process could not be read (%1 bytes)")
                    .arg(n));
            continue;
        }
        // A receiver may close or delete the channel.
        const QPointer<MessageChannel> self(this);
        Q_EMIT received(message);
        if (!self)
            return;
    }
}

void MessageChannel::close()
{
    if (m_fd < 0)
        return;
    m_readNotifier->setEnabled(false);
    m_writeNotifier->setEnabled(false);
    ::close(m_fd);
    m_fd = -1;
    m_queue.clear();
    Q_EMIT closed();
}
