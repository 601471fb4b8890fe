#pragma once

#include <QList>
#include <QObject>
#include <QString>

// Desktop notifications, one at a time: the heads-up before a break. The
// backend is the session's notification server (platform/notify).
class Notifier : public QObject {
    Q_OBJECT
public:
    struct Action {
        QString key;   // what actionInvoked() says
        QString label; // what the button says
    };

    using QObject::QObject;
    // Shows the notification, replacing the one this notifier showed before.
    virtual void show(const QString &summary, const QList<Action> &actions) = 0;
    // Takes it off the screen if it is still there.
    virtual void withdraw() = 0;

Q_SIGNALS:
    // The user chose one of the actions; the notification is gone.
    void actionInvoked(const QString &key);
    // It went without an action (dismissed, expired, withdrawn).
    void closed();
};
