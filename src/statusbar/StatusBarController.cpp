#include "statusbar/StatusBarController.h"

#include "app/AppState.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PromptState.h"

#include <QObject>

namespace {

struct Item {
    std::function<std::unique_ptr<StatusItemBackend>()> factory;
    std::unique_ptr<StatusItemBackend> backend;
    bool created = false;
    QString title;
    QString pauseTitle;
    QString pauseImage;
    QMetaObject::Connection timesUpConnection;
    QMetaObject::Connection timeStringConnection;
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

// Runs for every assignment to the work countdown's timesUp or timeString.
void onCountdown()
{
    TicktackState *work = AppState::workState();
    QString title = work->timeString();
    const bool timesUp = work->timesUp();
    if (timesUp) {
        title.clear();
        AppState::promptState()->showBreak();
    }
    if (!AppState::prefState()->showTime())
        title.clear();
    applyTitle(title);
}

} // namespace

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
    if (s.factory)
        s.backend = s.factory();
    if (s.backend && !s.pauseTitle.isEmpty())
        s.backend->setPauseItem(s.pauseImage, s.pauseTitle);

    TicktackState *work = AppState::workState();
    QObject::disconnect(s.timesUpConnection);
    QObject::disconnect(s.timeStringConnection);
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

void StatusBarController::showTime(bool show)
{
    TicktackState *work = AppState::workState();
    applyTitle(show && !work->timesUp() ? work->timeString() : QString());
}

void StatusBarController::setPauseItem(const QString &image, const QString &title)
{
    Item &s = state();
    s.pauseImage = image;
    s.pauseTitle = title;
    if (s.backend)
        s.backend->setPauseItem(image, title);
}

QString StatusBarController::title()
{
    return state().title;
}

QString StatusBarController::pauseItemTitle()
{
    return state().pauseTitle;
}

QString StatusBarController::pauseItemImage()
{
    return state().pauseImage;
}
