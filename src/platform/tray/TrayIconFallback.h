#pragma once

#include "ClassicTrayIcon.h"

#include <QMenu>
#include <QSystemTrayIcon>

// The classic tray icon (XEmbed), for sessions without a StatusNotifierWatcher.
// It cannot show text beside the icon, so the remaining time goes into its
// tooltip. Its menu is a QMenu built from StatusBarController::menu().
// Needs a QApplication; built into the classic tray module (ClassicTray.h).
class TrayIconFallback : public ClassicTrayIcon {
    Q_OBJECT
public:
    explicit TrayIconFallback(QObject *parent = nullptr);

    void setVisible(bool visible) override { m_icon.setVisible(visible); }
    void setTitle(const QString &title) override;
    QString toolTip() const { return m_icon.toolTip(); }
    void rebuildMenu() override;
    void updateItem(int id) override;
    QMenu *menu() { return &m_menu; }

private:
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};
