#pragma once

#include "ClassicTrayIcon.h"
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
    // The status item's tooltip. The classic icon keeps its own, "Narv 24:59",
    // as it shows no text beside the icon.
    void setToolTip(const QString &text) override;
    void setPauseItem(const QString &image, const QString &title) override;
    void menuLayoutChanged() override;
    void menuItemChanged(int id) override;

private:
    void useFallback(bool use);

    // Owned by the application object, so that nothing outlives it at exit.
    QPointer<StatusNotifierItem> m_item;
    QPointer<ClassicTrayIcon> m_fallback;
    QString m_title;
    bool m_saidNoItem = false; // the lack of any status item is in the log
};
