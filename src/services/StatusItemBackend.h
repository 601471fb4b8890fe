#pragma once

#include <QString>

// Draws the status item (StatusBarController decides what it shows): our own
// StatusNotifierItem, the classic tray icon (platform/tray), or a test's fake.
class StatusItemBackend {
public:
    virtual ~StatusItemBackend() = default;
    // The text beside the icon; empty shows the icon alone.
    virtual void setTitle(const QString &title) = 0;
    // The tooltip's text under the program's name. It changes far less often
    // than the title (see StatusBarController::toolTip()).
    virtual void setToolTip(const QString &text) {}
    // The start/stop menu item (tag pause): its icon name and label.
    virtual void setPauseItem(const QString &image, const QString &title) = 0;
    // Items were inserted into or removed from StatusBarController::menu().
    virtual void menuLayoutChanged() {}
    // The title of the item with this id changed (the water tally).
    virtual void menuItemChanged(int id) {}
};
