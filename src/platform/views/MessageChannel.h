#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QVariantList>

class QSocketNotifier;

// One end of the line between the counting process and the window process: a
// Unix socket of type SOCK_SEQPACKET, so every message arrives whole and in
// order. A message is a list of variants (its first item names it), written
// with QDataStream. Sending never blocks: what the socket cannot take yet
// waits here, in order, until it can.
class MessageChannel : public QObject {
    Q_OBJECT
public:
    // Takes the descriptor over; it is made non-blocking and closed with the
    // channel.
    explicit MessageChannel(int fd, QObject *parent = nullptr);
    ~MessageChannel() override;

    // A connected pair, close-on-exec; false (errno set) when none could be made.
    static bool makePair(int fds[2]);

    bool isOpen() const { return m_fd >= 0; }
    void send(const QVariantList &message);
    // Messages not yet taken by the socket.
    qsizetype pending() const { return m_queue.size(); }

Q_SIGNALS:
    void received(const QVariantList &message);
    // The other end went away (or the socket failed); nothing more comes or goes.
    void closed();

private:
    void readAll();
    bool flush();
    void close();

    int m_fd = -1;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    QList<QByteArray> m_queue;
};
