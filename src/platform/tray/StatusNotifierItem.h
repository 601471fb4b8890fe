#pragma once

#include "DBusMenuExporter.h"
#include "app/AppInfo.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

// Narv's item in the panel: an org.kde.StatusNotifierItem at
// /StatusNotifierItem (adaptor generated from org.kde.StatusNotifierItem.xml)
// and its menu at /MenuBar, on a session bus connection of their own. The
// title (the remaining time) is the Ayatana label beside the icon; the
// tooltip says when the next break comes (StatusBarController::toolTip()).
//
// It registers with the StatusNotifierWatcher under the connection's unique
// name whenever a watcher appears (a restarted panel forgets its items), and
// again, with growing pauses, until the watcher lists it: some drop a
// registration now and then. It also holds org.kde.StatusNotifierItem-<pid>-1
// for those who look it up by name. A lost connection is made again, and
// the item exported anew, as soon as a bus is there.
class StatusNotifierItem : public QObject, protected QDBusContext {
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
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide CONSTANT)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex CONSTANT)
public:
    static constexpr const char *objectPath = "/StatusNotifierItem";
    static constexpr const char *watcherService = "org.kde.StatusNotifierWatcher";
    // Registrations before the item gives up on a watcher that does not list it.
    static constexpr int registrationAttempts = 5;

    explicit StatusNotifierItem(QObject *parent = nullptr);
    ~StatusNotifierItem() override;
    // Connects and registers; watcherChanged() tells whether a watcher is there.
    void start();

    DBusMenuExporter *menuExporter() const { return m_menu; }

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return AppInfo::identifier(); }
    QString title() const { return AppInfo::name(); }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString iconName() const { return m_iconName; }
    DBusImageList iconPixmap() const { return m_pixmaps; }
    // No pixmaps: panels show the item's own icon.
    DBusToolTip toolTip() const { return {m_iconName, {}, AppInfo::name(), m_toolTip}; }
    bool itemIsMenu() const { return true; }
    QDBusObjectPath menu() const { return QDBusObjectPath(DBusMenuExporter::objectPath); }
    QString label() const { return m_label; }
    // The widest time the label usually shows, so panels keep its width steady.
    static QString labelGuide() { return QStringLiteral("00:00"); }
    uint orderingIndex() const { return 0; }
    QString emptyText() const { return {}; }
    DBusImageList noImages() const { return {}; }

    // The text beside the icon (empty: the icon alone), and the tooltip's.
    void setLabel(const QString &label);
    void setToolTip(const QString &text);

    // Called through the adaptor. The item is a menu without a window:
    // Activate is refused, so hosts that call it on a left click (Plasma)
    // open the menu instead.
    void ContextMenu(int, int) {}
    void Activate(int x, int y);
    void SecondaryActivate(int, int) {}
    void Scroll(int, const QString &) {}
    void ProvideXdgActivationToken(const QString &) {}

Q_SIGNALS:
    void NewToolTip();

    // Whether a watcher is there: once it is known, then at each change.
    void watcherChanged(bool present);

private Q_SLOTS:
    void connectionLost();
    void onItemRegistered(const QString &item);

private:
    bool connectToBus();
    void setWatcherPresent(bool present);
    // Anew (a new connection or watcher), or again when the watcher does not list it.
    void registerWithWatcher(bool again = false);
    void checkListed();

    QDBusConnection m_connection{QString()};
    QPointer<DBusMenuExporter> m_menu;
    QString m_serviceName;
    QString m_iconName; // empty while the icon theme has no icon of ours
    DBusImageList m_pixmaps;
    QString m_label;
    QString m_toolTip;
    std::optional<bool> m_watcher; // whether a watcher is there, once known
    bool m_listed = false;
    int m_attempts = 0;
    int m_reconnects = 0;
    QTimer m_reconnect; // while the bus is lost
    QTimer m_confirm;   // after a registration, until the watcher lists the item
};
