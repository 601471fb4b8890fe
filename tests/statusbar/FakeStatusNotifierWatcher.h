#pragma once

// A StatusNotifierWatcher as small as a panel's: it takes registrations and
// remembers who made them, so a test can see the item register (and register
// again when a watcher comes back).

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

class FakeStatusNotifierWatcher : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
public:
    explicit FakeStatusNotifierWatcher(const QDBusConnection &connection) : m_connection(connection)
    {
    }
    bool start()
    {
        return m_connection.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                           QDBusConnection::ExportScriptableContents |
                                               QDBusConnection::ExportAllProperties) &&
               m_connection.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }

    // The unique bus name of whoever made the last registration.
    QString lastSender() const { return m_lastSender; }

    QStringList registeredItems() const { return m_listed; }
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }

public Q_SLOTS:
    // The protocol allows a bus name or an object path on the caller.
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &serviceOrPath)
    {
        m_lastSender = message().service();
        const QString item = serviceOrPath.startsWith(u'/')
                                 ? m_lastSender + serviceOrPath
                                 : serviceOrPath + QStringLiteral("/StatusNotifierItem");
        if (!m_listed.contains(item))
            m_listed.append(item);
        Q_EMIT StatusNotifierItemRegistered(item);
    }
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString &) {}

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString &item);
    Q_SCRIPTABLE void StatusNotifierItemUnregistered(const QString &item);
    Q_SCRIPTABLE void StatusNotifierHostRegistered();

private:
    QDBusConnection m_connection;
    QStringList m_listed;
    QString m_lastSender;
};
