#pragma once

#include <QString>

#include <functional>
#include <memory>

// The status item's logic: the title that follows the work countdown, the
// start/stop item's title and icon, and the end of a work period starting the
// break. How the item is drawn (a StatusNotifierItem, a plain tray icon) sits
// behind StatusItemBackend.
class StatusItemBackend {
public:
    virtual ~StatusItemBackend() = default;
    // The text beside the icon; empty shows the icon alone.
    virtual void setTitle(const QString &title) = 0;
    // The start/stop menu item (tag pause): its icon name and label.
    virtual void setPauseItem(const QString &image, const QString &title) = 0;
};

namespace StatusBarController {
enum class Tag { pause = 2, water = 3 };

// Makes the backend when the item is created; without one the item exists
// only as state (the title is still kept and the break still starts).
void setBackendFactory(std::function<std::unique_ptr<StatusItemBackend>()> factory);

// Creates the status item on first use and subscribes it to the work countdown.
void item();
bool hasItem();

// Sets the title from the countdown at once; never starts a break.
void showTime(bool show);
// Called whenever AppState::working is assigned.
void setPauseItem(const QString &image, const QString &title);

QString title();
QString pauseItemTitle();
QString pauseItemImage();
} // namespace StatusBarController
