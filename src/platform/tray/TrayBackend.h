#pragma once

#include "ClassicTrayIcon.h"
#include "DBusMenuExporter.h"
#include "StatusNotifierItem.h"
#include "statusbar/StatusBarController.h"

#include <QPointer>
#include <QString>

// The status item on the Linux desktop: a StatusNotifierItem with its menu
// over dbusmenu, and the classic tray icon while no StatusNotifierWatcher is
// on the bus (it steps aside as soon as one appears). The classic icon needs
// a QApplication, which the program only is when no watcher was there at
// start (ClassicTray.h).
class TrayBackend : public StatusItemBackend {
public:
    TrayBackend();
    ~TrayBackend() override;

    // Makes StatusBarController create this backend for its item.
    static void install();

    void setTitle(const QString &title) override;
    // The status item's tooltip. The classic icon keeps its own, "Narv 24:59":
    // it shows no text beside the icon, and changing its tooltip costs no
    // one else anything.
    void setToolTip(const QString &text) override;
    void setPauseItem(const QString &image, const QString &title) override;
    void menuLayoutChanged() override;
    void menuItemChanged(int id) override;

    StatusNotifierItem *statusNotifierItem() const { return m_item; }
    // The classic icon, when it is in use.
    ClassicTrayIcon *fallback() const { return m_fallback; }

private:
    void useFallback(bool use);

    // Owned by the application object, so that nothing outlives it at exit.
    QPointer<StatusNotifierItem> m_item;
    QPointer<ClassicTrayIcon> m_fallback;
    QString m_title;
    bool m_saidNoItem = false; // the lack of any status item is in the log
};
