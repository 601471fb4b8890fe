#include "statusbar/StatusBarController.h"

#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/BreakDeferral.h"
#include "app/Clock.h"
#include "app/CycleEvents.h"
#include "app/Localized.h"
#include "app/PauseFor.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefInterruptState.h"
#include "settings/PrefState.h"
#include "settings/PromptState.h"
#include "statusbar/MenuAction.h"

#include <QDateTime>
#include <QObject>

#include <cmath>
#include <cstdlib>

using namespace StatusBarController;

namespace {

// The start/stop item's icon and label while the cycle is (not) working.
QString pauseImageOf(bool working)
{
    return working ? QStringLiteral("stop.circle") : QStringLiteral("play.circle");
}

QString pauseTitleOf(bool working)
{
    // "Wrok" is the key in the translation tables, which read it as "Work".
    return QStringLiteral("- ") + (working ? NARV_TR("Stop") : NARV_TR("Wrok")) +
           QStringLiteral(" -");
}

void showPausedUntil(const QDateTime &until);

struct Item {
    Item()
        : pauseTitle(pauseTitleOf(AppState::working())),
          pauseImage(pauseImageOf(AppState::working()))
    {
        // The start/stop item follows every later assignment to AppState::working.
        QObject::connect(CycleEvents::instance(), &CycleEvents::workingAssigned,
                         CycleEvents::instance(), [](bool working) {
                             if (!working && PauseFor::until().isValid())
                                 showPausedUntil(PauseFor::until());
                             StatusBarController::setPauseItem(pauseImageOf(working),
                                                               pauseTitleOf(working));
                         });
        QObject::connect(PrefInterruptState::instance(), &PrefInterruptState::changed,
                         CycleEvents::instance(), [] {
                             StatusBarController::showPauseForItems(
                                 PrefInterruptState::instance()->pauseForEnable());
                         });
        QObject::connect(CycleEvents::instance(), &CycleEvents::waterChanged,
                         CycleEvents::instance(), StatusBarController::updateWaterItem);
    }

    std::function<std::unique_ptr<StatusItemBackend>()> factory;
    std::unique_ptr<StatusItemBackend> backend;
    bool created = false;
    QString title;
    QString toolTip;
    qint64 toolTipDue = -1; // ms since 1970 of the break the tooltip names; -1: it names none
    QString pauseTitle;
    QString pauseImage;
    QMetaObject::Connection timesUpConnection;
    QMetaObject::Connection timeStringConnection;
    // show_time_in_status_bar, followed through the settings' change signal
    // rather than read on every tick.
    bool showTime = true;
    QMetaObject::Connection showTimeConnection;

    bool menuBuilt = false;
    QList<MenuItem> menu;
    int lastId = 0;
    WaterSource water;
    bool historyShown = false; // "History..." after "Settings..."
    bool pauseForShown = false;
};

Item &state()
{
    static Item item;
    return item;
}

void applyTitle(const QString &title)
{
    state().title = title;
    if (state().backend)
        state().backend->setTitle(title);
}

// A pause that ends by itself says when, in the place of the frozen time:
// "until 14:35", or "until Wed 00:00" for another day.
void showPausedUntil(const QDateTime &until)
{
    const bool today = until.date() == Clock::now().date();
    applyTitle(NARV_TR("until %1").arg(until.toString(today ? u"HH:mm" : u"ddd HH:mm")));
}

// See StatusBarController::toolTip(). Runs every second while counting, so the
// break's moment is only worked out anew, and told, when the schedule moved
// (a restart, a pause, the machine waking from sleep) and not for the few
// milliseconds a tick comes late. `remaining`: the work countdown's seconds
// left, or -1 when none runs or no time is shown.
void updateToolTip(qint64 remaining)
{
    Item &s = state();
    QString tip;
    if (remaining >= 0) {
        const qint64 due = Clock::nowMs() + remaining * 1000;
        if (s.toolTipDue >= 0 && std::abs(due - s.toolTipDue) < 1000)
            return;
        s.toolTipDue = due;
        // "HH:MM" whatever the locale: its short format has seconds in some.
        tip = NARV_TR("Next break at %1")
                  .arg(QDateTime::fromMSecsSinceEpoch(due).time().toString(u"HH:mm"));
    } else {
        s.toolTipDue = -1;
        tip = s.title;
    }
    if (tip == s.toolTip)
        return;
    s.toolTip = tip;
    if (s.backend)
        s.backend->setToolTip(tip);
}

void updateToolTip()
{
    updateToolTip(state().title.isEmpty() ? -1
                                          : TicktackController::remaining(AppState::workState()));
}

// Runs for every assignment to the work countdown's timesUp or timeString.
void onCountdown()
{
    TicktackState *work = AppState::workState();
    QString title = work->timeString();
    const bool timesUp = work->timesUp();
    if (timesUp) {
        title.clear();
        // An owed break is asked about again on each tick of the overrun countdown.
        if (!BreakDeferral::holds())
            AppState::promptState()->showBreak();
    }
    if (!state().showTime)
        title.clear();
    applyTitle(title);
    // As a work countdown starts it is not running yet; setPauseItem, which
    // comes right after, names its break.
    const qint64 remaining = title.isEmpty() ? -1 : TicktackController::remaining(work);
    if (title.isEmpty() || remaining >= 0)
        updateToolTip(remaining);
}

MenuItem makeItem(const QString &title, const QString &image, const QString &key,
                  MenuActionHandler action, int tag = 0)
{
    MenuItem item;
    item.id = ++state().lastId;
    item.title = title;
    item.image = image;
    item.keyEquivalent = key;
    item.action = action;
    item.tag = tag;
    return item;
}

MenuItem separator()
{
    MenuItem item;
    item.id = ++state().lastId;
    item.separator = true;
    return item;
}

// A new item on every call, so a re-inserted water item is a new menu entry.
MenuItem waterItem()
{
    return makeItem(waterTitle(), QStringLiteral("drop.triangle"), QStringLiteral("r"),
                    MenuAction::didClickWater, int(Tag::water));
}

QList<MenuItem> pauseForItems()
{
    return {
        makeItem(NARV_TR("Pause for 30 minutes"), QString(), QString(),
                 MenuAction::didClickPauseFor30),
        makeItem(NARV_TR("Pause for 1 hour"), QString(), QString(), MenuAction::didClickPauseFor60),
        makeItem(NARV_TR("Pause until tomorrow"), QString(), QString(),
                 MenuAction::didClickPauseUntilTomorrow)};
}

MenuItem historyItem()
{
    return makeItem(NARV_TR("History") + QStringLiteral("..."), QString(), QString(),
                    MenuAction::didClickHistory);
}

int indexOfAction(MenuActionHandler action)
{
    const QList<MenuItem> &items = menu();
    for (int i = 0; i < items.size(); ++i) {
        if (items.at(i).action == action)
            return i;
    }
    return -1;
}

int indexOfTag(Tag tag)
{
    const QList<MenuItem> &items = menu();
    for (int i = 0; i < items.size(); ++i) {
        if (items.at(i).tag == int(tag))
            return i;
    }
    return -1;
}

void build()
{
    Item &s = state();
    const QString dots = QStringLiteral("...");
    QList<MenuItem> &menu = s.menu;
    // One statement per item, so ids follow the menu's order.
    menu.append(makeItem(QStringLiteral("    ") + AppInfo::name() + QStringLiteral(" - v") +
                             AppInfo::version() + u'(' + AppInfo::build() + u')',
                         QString(), QString(), nullptr));
    menu.append(separator());
    menu.append(makeItem(s.pauseTitle, s.pauseImage, QStringLiteral("p"), MenuAction::didClickPause,
                         int(Tag::pause)));
    if (s.water.enable && s.water.enable())
        menu.append(waterItem());
    s.pauseForShown = PrefInterruptState::instance()->pauseForEnable();
    if (s.pauseForShown)
        menu.append(pauseForItems());
    // The "..." goes on after the lookup, so translations carry no dots.
    menu.append(makeItem(NARV_TR("Settings") + dots, QStringLiteral("gearshape.circle"),
                         QStringLiteral(","), MenuAction::didClickSettings));
    if (s.historyShown)
        menu.append(historyItem());
    menu.append(separator());
    menu.append(makeItem(NARV_TR("Check for Updates") + dots,
                         QStringLiteral("arrow.counterclockwise.icloud"), QString(),
                         MenuAction::didClickUpdates));
    menu.append(makeItem(NARV_TR("Feedback") + dots, QStringLiteral("mail.stack"), QString(),
                         MenuAction::didClickFeedback));
    menu.append(makeItem(NARV_TR("About") + dots, QStringLiteral("info.circle"), QString(),
                         MenuAction::didClickAbout));
    menu.append(makeItem(NARV_TR("Quit"), QStringLiteral("escape"), QStringLiteral("q"),
                         MenuAction::didClickQuit));
}

} // namespace

std::optional<Tag> StatusBarController::tagFromRawValue(int rawValue)
{
    switch (rawValue) {
    case int(Tag::pause):
        return Tag::pause;
    case int(Tag::water):
        return Tag::water;
    default:
        return std::nullopt;
    }
}

void StatusBarController::setWaterSource(WaterSource source)
{
    state().water = std::move(source);
}

void StatusBarController::setBackendFactory(
    std::function<std::unique_ptr<StatusItemBackend>()> factory)
{
    state().factory = std::move(factory);
}

void StatusBarController::item()
{
    Item &s = state();
    if (s.created)
        return;
    s.created = true;
    menu(); // the backend shows the menu as soon as it exists
    if (s.factory)
        s.backend = s.factory();
    if (s.backend && !s.pauseTitle.isEmpty())
        s.backend->setPauseItem(s.pauseImage, s.pauseTitle);
    if (s.backend && !s.toolTip.isEmpty())
        s.backend->setToolTip(s.toolTip);

    TicktackState *work = AppState::workState();
    QObject::disconnect(s.timesUpConnection);
    QObject::disconnect(s.timeStringConnection);
    QObject::disconnect(s.showTimeConnection);
    PrefState *pref = AppState::prefState();
    s.showTime = pref->showTime();
    // Also when the settings file is edited by hand or by the window process.
    s.showTimeConnection = QObject::connect(pref, &PrefState::showTimeChanged, work, [pref] {
        if (pref->showTime() != state().showTime)
            StatusBarController::showTime(pref->showTime());
    });
    s.timesUpConnection = QObject::connect(work, &TicktackState::timesUpChanged, work, onCountdown);
    s.timeStringConnection =
        QObject::connect(work, &TicktackState::timeStringChanged, work, onCountdown);
    // Like a subscription that receives the current values at once.
    onCountdown();
}

bool StatusBarController::hasItem()
{
    return state().created;
}

const QList<MenuItem> &StatusBarController::menu()
{
    Item &s = state();
    if (!s.menuBuilt) {
        s.menuBuilt = true;
        build();
    }
    return s.menu;
}

const MenuItem *StatusBarController::itemWithTag(Tag tag)
{
    const int index = indexOfTag(tag);
    return index < 0 ? nullptr : &state().menu.at(index);
}

const MenuItem *StatusBarController::itemWithId(int id)
{
    for (const MenuItem &item : menu()) {
        if (item.id == id)
            return &item;
    }
    return nullptr;
}

bool StatusBarController::activate(int id)
{
    const MenuItem *item = itemWithId(id);
    if (!item || !item->isEnabled())
        return false;
    // The action may change the menu (and so move the item): hand it a copy.
    const MenuItem sender = *item;
    sender.action(&sender);
    return true;
}

void StatusBarController::insetWaterItem()
{
    if (indexOfTag(Tag::water) >= 0)
        return;
    state().menu.insert(int(Tag::water), waterItem());
    if (state().backend)
        state().backend->menuLayoutChanged();
}

void StatusBarController::showHistoryItem(bool shown)
{
    Item &s = state();
    s.historyShown = shown;
    if (!s.menuBuilt)
        return;
    const int index = indexOfAction(MenuAction::didClickHistory);
    if (shown == (index >= 0))
        return;
    if (shown)
        s.menu.insert(indexOfAction(MenuAction::didClickSettings) + 1, historyItem());
    else
        s.menu.removeAt(index);
    if (s.backend)
        s.backend->menuLayoutChanged();
}

void StatusBarController::showPauseForItems(bool shown)
{
    Item &s = state();
    if (!s.menuBuilt || shown == s.pauseForShown)
        return;
    s.pauseForShown = shown;
    const int at = indexOfAction(MenuAction::didClickSettings);
    if (shown) {
        const QList<MenuItem> items = pauseForItems();
        for (int i = 0; i < items.size(); ++i)
            s.menu.insert(at + i, items.at(i));
    } else {
        s.menu.remove(at - 3, 3);
    }
    if (s.backend)
        s.backend->menuLayoutChanged();
}

void StatusBarController::removeWaterItem()
{
    const int index = indexOfTag(Tag::water);
    if (index < 0)
        return;
    state().menu.removeAt(index);
    if (state().backend)
        state().backend->menuLayoutChanged();
}

void StatusBarController::updateWaterItem()
{
    const int index = indexOfTag(Tag::water);
    if (index < 0)
        return;
    MenuItem &item = state().menu[index];
    item.title = waterTitle();
    if (state().backend)
        state().backend->menuItemChanged(item.id);
}

QString StatusBarController::waterTitle(float finishedPrecent, bool inWorkTime)
{
    // Float arithmetic on purpose: the tally is a float, and 0.29 shows as 28
    // or 29 the same way everywhere the fraction is shown.
    const float scaled = finishedPrecent * 100.0f;
    // Also false for NaN. -2^63 and 2^63 are exact in a float.
    if (!(scaled >= -0x1p63f && scaled < 0x1p63f))
        qFatal("Fatal error: water finishedPrecent %g cannot be shown as a whole per cent",
               double(finishedPrecent));
    const auto percent = qint64(std::trunc(scaled));
    const QString hours = inWorkTime ? QString() : NARV_TR("Out of hours");
    return NARV_TR("Water") + QStringLiteral(" (") + QString::number(percent) +
           QStringLiteral("% ") + hours + u')';
}

QString StatusBarController::waterTitle()
{
    const WaterSource &water = state().water;
    const float finished = water.finishedPrecent ? water.finishedPrecent() : 0.0f;
    const bool inWorkTime = water.inWorkTime ? water.inWorkTime() : true;
    return waterTitle(finished, inWorkTime);
}

void StatusBarController::showTime(bool show)
{
    state().showTime = show;
    TicktackState *work = AppState::workState();
    applyTitle(show && !work->timesUp() ? work->timeString() : QString());
    updateToolTip();
}

void StatusBarController::setPauseItem(const QString &image, const QString &title)
{
    Item &s = state();
    s.pauseImage = image;
    s.pauseTitle = title;
    // A menu without the start/stop item has nothing to update.
    if (const int index = s.menuBuilt ? indexOfTag(Tag::pause) : -1; index >= 0) {
        s.menu[index].image = image;
        s.menu[index].title = title;
    }
    if (s.backend)
        s.backend->setPauseItem(image, title);
    // Called whenever the countdown was started or stopped.
    updateToolTip();
}

QString StatusBarController::title()
{
    return state().title;
}

QString StatusBarController::toolTip()
{
    return state().toolTip;
}

QString StatusBarController::pauseItemTitle()
{
    return state().pauseTitle;
}

QString StatusBarController::pauseItemImage()
{
    return state().pauseImage;
}
