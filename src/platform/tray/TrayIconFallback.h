#pragma once

#include "ClassicTrayIcon.h"

#include <QMenu>
#include <QPointer>

class QSystemTrayIcon;

// The classic tray icon (XEmbed), for sessions without a StatusNotifierWatcher.
// It cannot show text beside the icon, so the remaining time goes into its
// tooltip. Its menu is a QMenu built from StatusBarController::menu().
// Needs a QApplication; built into the classic tray module (ClassicTray.h).
class TrayIconFallback : public ClassicTrayIcon {
    Q_OBJECT
public:
    explicit TrayIconFallback(QObject *parent = nullptr);
    ~TrayIconFallback() override;

    // Whether this session has a tray to put the icon in.
    static bool isAvailable();

    void show() override;
    void hide() override;
    bool isVisible() const override;
    void setTitle(const QString &title) override;
    QString toolTip() const;
    void rebuildMenu() override;
    void updateItem(int id) override;
    QMenu *menu() const { return m_menu; }

private:
    QSystemTrayIcon *m_icon = nullptr;
    QPointer<QMenu> m_menu;
};
