#pragma once

// A StatusNotifierWatcher as small as a panel's: it takes registrations and
// remembers who made them, so a test can see the item register (and register
// again when a watcher comes back). Like GNOME's now and then, it can answer
// a registration and drop it all the same.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
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
    ~FakeStatusNotifierWatcher() override { stop(); }

    bool start()
    {
        m_running = m_connection.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                                QDBusConnection::ExportScriptableContents |
                                                    QDBusConnection::ExportAllProperties) &&
                    m_connection.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        return m_running;
    }

    void stop()
    {
        if (!m_running)
            return;
        m_connection.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        m_connection.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
        m_running = false;
        m_listed.clear();
    }

    // "service/path" of each registration, in order, repeats included.
    QStringList registrations() const { return m_registrations; }
    // The next n registrations are answered and neither listed nor signalled.
    void dropRegistrations(int n) { m_drop = n; }
    // List and announce items as GNOME's AppIndicator extension does: "<bus name>@<path>".
    void listLikeGnome() { m_gnome = true; }
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
        m_registrations.append(item);
        if (m_drop > 0 && m_drop--)
            return;
        const QString listed =
            m_gnome ? QString(item).replace(item.indexOf(u'/'), 1, QStringLiteral("@/")) : item;
        if (!m_listed.contains(listed))
            m_listed.append(listed);
        Q_EMIT StatusNotifierItemRegistered(listed);
    }
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString &) {}

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString &item);
    Q_SCRIPTABLE void StatusNotifierItemUnregistered(const QString &item);
    Q_SCRIPTABLE void StatusNotifierHostRegistered();

private:
    QDBusConnection m_connection;
    bool m_running = false;
    QStringList m_registrations;
    QStringList m_listed;
    int m_drop = 0;
    bool m_gnome = false;
    QString m_lastSender;
};
