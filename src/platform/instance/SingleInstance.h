#pragma once

#include <QLockFile>
#include <QObject>
#include <QVariantMap>

#include <memory>

class QSocketNotifier;

// Makes sure one Narv runs per user session. The first process claims the
// session-bus name app.narv.Narv and serves org.freedesktop.Application on
// /app/narv/Narv; without a session bus it holds a lock file and listens on a
// local socket instead. A later start hands over to it and exits.
//
// The local socket is a plain Unix socket: QLocalServer would bring QtNetwork
// (and what it links) into the process for its whole life, for one connection
// that carries nothing.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    enum class Claim {
        First,      // this process is the one instance
        HandedOver, // another one runs and was asked to show itself
        Failed,     // another one runs but could not be reached
    };

    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    Claim claim();

    static QString serviceName();
    static QString objectPath();
    // Where the first process listens when there is no session bus.
    static QString socketPath();

public Q_SLOTS:
    // org.freedesktop.Application, called by a second start or the desktop.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(const QString &actionName, const QVariantList &parameter,
                        const QVariantMap &platformData);

Q_SIGNALS:
    // Another start of Narv asked for the running one.
    void activated();

private:
    Claim claimOnBus();
    Claim claimWithLockFile();
    void listen();
    void acceptAll();

    QString m_launchToken; // XDG_ACTIVATION_TOKEN this process was started with
    std::unique_ptr<QLockFile> m_lock;
    int m_listener = -1; // the local socket's file descriptor
    QSocketNotifier *m_notifier = nullptr;
};
