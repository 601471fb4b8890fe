#pragma once

#include "app/SystemEventController.h"

#include <QDBusConnection>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

class QDBusMessage;
class QDBusObjectPath;

// Screen lock as the desktop reports it over D-Bus: LockedHint of our logind
// session (system bus) and ActiveChanged(b) of the screensaver services
// (session bus). Desktops send different subsets, GNOME both kinds, KDE its
// ActiveChanged on two paths; all of it is merged into one locked state whose
// changes are reported once, after a short settling time that swallows a lock
// undone at once.
class DBusScreenLockSource : public ScreenLockSource {
    Q_OBJECT
public:
    // The interfaces whose ActiveChanged(b) is listened to, from any sender and path.
    static const QStringList &screenSaverInterfaces();
    static constexpr int settleMs = 250;

    DBusScreenLockSource(const QDBusConnection &sessionBus, const QDBusConnection &systemBus,
                         QObject *parent = nullptr);
    void start() override;

    // The merged state as last reported through locked()/unlocked().
    bool isLocked() const { return m_locked; }
    // The logind session being watched; empty until it is found.
    QString sessionPath() const { return m_sessionPath; }

private Q_SLOTS:
    void onActiveChanged(bool active, const QDBusMessage &message);
    void onSessionPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                    const QStringList &invalidated);

private:
    void findSession();
    void findSessionById();
    void watchSession(const QDBusObjectPath &path);
    void readLockedHint();
    void report(bool locked);
    void settle();

    QDBusConnection m_sessionBus;
    QDBusConnection m_systemBus;
    QTimer m_settle;
    QString m_sessionPath;
    bool m_locked = false;  // as reported to the program
    bool m_pending = false; // as the desktop last said
};
