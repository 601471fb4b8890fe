#pragma once

#include <QObject>
#include <QString>

// The classic tray icon as TrayBackend sees it. The icon itself
// (TrayIconFallback) needs QtWidgets and a QApplication, so it lives in the
// classic tray module (ClassicTray.h), which only sessions without a
// StatusNotifierWatcher load.
class ClassicTrayIcon : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void setVisible(bool visible) = 0;
    virtual void setTitle(const QString &title) = 0;
    // Builds the menu anew (after insertions or removals).
    virtual void rebuildMenu() = 0;
    // Refreshes one item's title and icon.
    virtual void updateItem(int id) = 0;
};
