#pragma once

#include "StatusNotifierTypes.h"

#include <QObject>
#include <QPointer>

#include <dbus/dbus.h>

class MainLoopBus;

// Narv's item in the panel: an org.kde.StatusNotifierItem at
// /StatusNotifierItem under the name org.kde.StatusNotifierItem-<pid>-1, on
// the main thread's own bus connection (MainLoopBus). The title (the remaining
// time) is the Ayatana label beside the icon; the tooltip says when the next
// break comes (StatusBarController::toolTip()); the menu
// is the one DBusMenuExporter publishes on the same connection. The interface
// is org.kde.StatusNotifierItem.xml, which is also what Introspect returns.
//
// It registers with org.kde.StatusNotifierWatcher when one is on the bus and
// again each time one appears: at login the panel often starts after us, and a
// restarted panel forgets its items.
class StatusNotifierItem : public QObject {
    Q_OBJECT
public:
    static constexpr const char *objectPath = "/StatusNotifierItem";
    static constexpr const char *interfaceName = "org.kde.StatusNotifierItem";
    static constexpr const char *watcherService = "org.kde.StatusNotifierWatcher";

    explicit StatusNotifierItem(MainLoopBus *bus, QObject *parent = nullptr);
    ~StatusNotifierItem() override;

    // False when the bus refused the object or the name.
    bool isExported() const { return m_exported; }
    QString serviceName() const { return m_serviceName; }
    // Whether a StatusNotifierWatcher is on the bus right now.
    bool watcherPresent() const;

    QString label() const { return m_label; }
    DBusImageList iconPixmap() const { return m_pixmaps; }
    // The emblem, smallest first, in the sizes the build drew it
    // (make_tray_images): panels poll the item often, some on every tooltip
    // change, so they get a few ready sizes and scale the nearest one.
    static DBusImageList emblemPixmaps();
    DBusToolTip toolTip() const;
    // The widest time the label usually shows, so panels keep its width steady.
    static QString labelGuide() { return QStringLiteral("00:00"); }

    // The text beside the icon; empty shows the icon alone.
    void setLabel(const QString &label);
    // The tooltip's text under the name.
    void setToolTip(const QString &text);

Q_SIGNALS:
    // A watcher appeared (true) or went away (false).
    void watcherChanged(bool present);

private:
    DBusMessage *handle(DBusMessage *call);
    // Writes the property as a variant; false for a name the interface lacks.
    bool writeProperty(DBusMessageIter *it, const QString &name) const;
    void registerWithWatcher();

    QPointer<MainLoopBus> m_bus;
    QString m_serviceName;
    bool m_exported = false;
    QString m_label;
    QString m_toolTip;
    QString m_iconName; // empty while the icon theme has no icon of ours
    DBusImageList m_pixmaps;
};

// The checked-in interface description as an Introspect reply: the interface
// of the file (":/narv/tray/<file>") and the standard ones every object has.
QString introspectionXml(const QString &interfaceFile);
