#include "app/AppState.h"

#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PrefState.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "settings/PromptState.h"

#include <QPointer>

namespace {
bool g_working = true;
bool g_manualPause = false;
QPointer<DelayedTask> g_mouseMoveEventItem;

void workingChanged()
{
    if (g_working) {
        qint64 seconds = 0;
        if (__builtin_mul_overflow(AppState::prefState()->workTime(), qint64(60), &seconds))
            qFatal("Fatal error: Arithmetic overflow converting pref.work.time to seconds");
        TicktackController::work(seconds);
    } else {
        TicktackController::stop();
    }
    Q_EMIT CycleEvents::instance()->workingAssigned(g_working);
}
} // namespace

bool AppState::working()
{
    return g_working;
}

void AppState::setWorking(bool value)
{
    g_working = value;
    workingChanged();
}

bool AppState::manualPause()
{
    return g_manualPause;
}

void AppState::setManualPause(bool value)
{
    g_manualPause = value;
    setWorking(!value);
}

void AppState::restartWork()
{
    if (!g_manualPause)
        setWorking(true);
}

DelayedTask *AppState::mouseMoveEventItem()
{
    return g_mouseMoveEventItem;
}

void AppState::setMouseMoveEventItem(DelayedTask *task)
{
    if (g_mouseMoveEventItem && g_mouseMoveEventItem != task)
        g_mouseMoveEventItem->deleteLater();
    g_mouseMoveEventItem = task;
}

PrefState *AppState::prefState()
{
    static PrefState *state = [] {
        auto *pref = new PrefState(PreferencesStore::instance());
        QObject::connect(pref, &PrefState::workTimeSet, pref, &AppState::restartWork);
        return pref;
    }();
    return state;
}

PromptState *AppState::promptState()
{
    static PromptState *state = new PromptState(prefState()->breakPrompt());
    return state;
}

TicktackState *AppState::workState()
{
    static TicktackState *state = new TicktackState;
    return state;
}

TicktackState *AppState::breakState()
{
    static TicktackState *state = new TicktackState;
    return state;
}

PrefWaterState *AppState::waterState()
{
    static PrefWaterState *state = new PrefWaterState(PreferencesStore::instance());
    return state;
}
