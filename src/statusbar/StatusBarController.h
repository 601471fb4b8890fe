#pragma once

#include "services/StatusItemBackend.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

// The status item's logic: the title that follows the work countdown, the
// menu (items in order with their titles, icons, keys and tags), the
// start/stop item's title and icon, the water item, and the end of a work
// period starting the break. How the item is drawn (a StatusNotifierItem, a
// plain tray icon) sits behind StatusItemBackend.
namespace StatusBarController {
// Marks the items other code finds again. The raw value of `water` is also the
// index the water item is inserted at, right after the start/stop item: the two
// uses must stay together.
enum class Tag { pause = 2, water = 3 };
// The case for 2 and 3, nothing for any other number.
std::optional<Tag> tagFromRawValue(int rawValue);

struct MenuItem;
using MenuActionHandler = void (*)(const MenuItem *sender);

struct MenuItem {
    int id = 0; // unique for the life of the process; a re-inserted item gets a new one
    bool separator = false;
    QString title;
    QString image;         // symbol name ("stop.circle"); the backend maps it to an icon
    QString keyEquivalent; // a lower-case letter or ",", used with Ctrl; empty: none
    int tag = 0;           // a Tag's raw value, 0 for none
    MenuActionHandler action = nullptr;
    // Items without an action (the header) cannot be chosen.
    bool isEnabled() const { return action != nullptr; }
};

// What the water item shows. The water settings fill this in; until they do,
// the reminder counts as off, with nothing drunk, inside working hours.
struct WaterSource {
    std::function<bool()> enable;
    std::function<float()> finishedPrecent; // fraction of the day's target, 0.45 = 45 %
    std::function<bool()> inWorkTime;
};
void setWaterSource(WaterSource source);

// Makes the backend when the item is created; without one the item exists
// only as state (the title is still kept and the break still starts).
void setBackendFactory(std::function<std::unique_ptr<StatusItemBackend>()> factory);

// Creates the status item on first use (building the menu first) and subscribes
// it to the work countdown.
void item();
bool hasItem();

// The menu, built on first use. The water item is in it when the reminder was
// on at that moment, and afterwards as insetWaterItem()/removeWaterItem() leave it.
const QList<MenuItem> &menu();
const MenuItem *itemWithTag(Tag tag);
const MenuItem *itemWithId(int id);
// Runs the item's action as a click does. False when no enabled item has this id.
bool activate(int id);

// Puts the water item in at index 3 unless it is there.
void insetWaterItem();
// Takes the water item out if it is there.
void removeWaterItem();
// "Pause for 30 minutes", "Pause for 1 hour" and "Pause until tomorrow"
// right before "Settings..." (after the start/stop and water items), while
// the setting offers them.
void showPauseForItems(bool shown);
// "History..." right after "Settings...", while the history is kept.
void showHistoryItem(bool shown);
// Recomputes the water item's title if it is there.
void updateWaterItem();
// "Water (45% )" inside working hours (the space before the parenthesis is
// kept), "Water (45% Out of hours)" outside them. The per cent is the fraction
// times 100, cut toward zero; a fraction that gives no whole number (infinite,
// not a number, beyond 64 bits) is a fatal error.
QString waterTitle(float finishedPrecent, bool inWorkTime);
// The same from the water source.
QString waterTitle();

// Sets the title from the countdown at once; never starts a break.
void showTime(bool show);
// The start/stop item's icon and label; set whenever AppState::working is assigned.
void setPauseItem(const QString &image, const QString &title);

QString title();
// What the tooltip says under the name. While the work countdown runs and its
// time is shown: "Next break at 14:35", which stays true from tick to tick, so
// panels that read the whole item again for every tooltip change (Plasma
// does) are not asked to each second. Otherwise the title itself: the time
// where a pause froze it, or nothing.
QString toolTip();
QString pauseItemTitle();
QString pauseItemImage();
} // namespace StatusBarController
