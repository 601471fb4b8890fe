#pragma once

#include <QMenu>
#include <QObject>
#include <QPointer>

class QSystemTrayIcon;

// The classic tray icon (XEmbed), for sessions without a StatusNotifierWatcher.
// It cannot show text beside the icon, so the remaining time goes into its
// tooltip. Its menu is a QMenu built from StatusBarController::menu().
// Needs a QApplication.
class TrayIconFallback : public QObject {
    Q_OBJECT
public:
    explicit TrayIconFallback(QObject *parent = nullptr);
    ~TrayIconFallback() override;

    // Whether this session has a tray to put the icon in.
    static bool isAvailable();

    void show();
    void hide();
    bool isVisible() const;
    void setTitle(const QString &title);
    QString toolTip() const;
    // Builds the menu anew (after insertions or removals).
    void rebuildMenu();
    // Refreshes one item's title and icon.
    void updateItem(int id);
    QMenu *menu() const { return m_menu; }

private:
    QSystemTrayIcon *m_icon = nullptr;
    QPointer<QMenu> m_menu;
};
