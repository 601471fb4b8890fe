#pragma once

#include "StatusNotifierTypes.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

class QDBusServiceWatcher;

// Narv's item in the panel: an org.kde.StatusNotifierItem at
// /StatusNotifierItem under the name org.kde.StatusNotifierItem-<pid>-1. The
// title (the remaining time) is the Ayatana label beside the icon and the
// tooltip's text; the menu is the one DBusMenuExporter publishes.
//
// It registers with org.kde.StatusNotifierWatcher when one is on the bus and
// again each time one appears: at login the panel often starts after us, and a
// restarted panel forgets its items.
class StatusNotifierItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ emptyText CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(DBusImageList IconPixmap READ iconPixmap CONSTANT)
    Q_PROPERTY(QString OverlayIconName READ emptyText CONSTANT)
    Q_PROPERTY(DBusImageList OverlayIconPixmap READ noImages CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ emptyText CONSTANT)
    Q_PROPERTY(DBusImageList AttentionIconPixmap READ noImages CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ emptyText CONSTANT)
    Q_PROPERTY(DBusToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(QString XAyatanaLabel READ label NOTIFY XAyatanaNewLabel)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide CONSTANT)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex CONSTANT)
public:
    static constexpr const char *objectPath = "/StatusNotifierItem";
    static constexpr const char *watcherService = "org.kde.StatusNotifierWatcher";

    explicit StatusNotifierItem(const QDBusConnection &connection, QObject *parent = nullptr);
    ~StatusNotifierItem() override;

    // False when the bus refused the object or the name.
    bool isExported() const { return m_exported; }
    QString serviceName() const { return m_serviceName; }
    // Whether a StatusNotifierWatcher is on the bus right now.
    bool watcherPresent() const;

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const;
    QString title() const;
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString iconName() const { return m_iconName; }
    DBusImageList iconPixmap() const { return m_pixmaps; }
    DBusToolTip toolTip() const;
    bool itemIsMenu() const { return true; }
    QDBusObjectPath menu() const;
    QString label() const { return m_label; }
    // The widest time the label usually shows, so panels keep its width steady.
    QString labelGuide() const { return QStringLiteral("00:00"); }
    uint orderingIndex() const { return 0; }
    QString emptyText() const { return {}; }
    DBusImageList noImages() const { return {}; }

    // The text beside the icon; empty shows the icon alone.
    void setLabel(const QString &label);

    // The protocol's methods, called through the adaptor. The item is a menu:
    // panels open it themselves, so clicks need nothing from us.
    void ContextMenu(int x, int y);
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void Scroll(int delta, const QString &orientation);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewMenu();
    void NewToolTip();
    void NewStatus(const QString &status);
    void XAyatanaNewLabel(const QString &label, const QString &guide);

    // A watcher appeared (true) or went away (false).
    void watcherChanged(bool present);

private:
    void registerWithWatcher();

    QDBusConnection m_connection;
    QDBusServiceWatcher *m_serviceWatcher = nullptr;
    QString m_serviceName;
    bool m_exported = false;
    QString m_label;
    QString m_iconName; // empty while the icon theme has no icon of ours
    DBusImageList m_pixmaps;
};
