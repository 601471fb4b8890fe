#include "app/HeadsUp.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "services/Notifier.h"
#include "settings/PrefInterruptState.h"
#include "settings/PromptState.h"

namespace {
struct Watcher {
    std::unique_ptr<Notifier> notifier;
    bool shown = false; // on the screen, as far as we know
    bool done = false;  // already shown for this approach of the break
};

Watcher &watcher()
{
    static Watcher w;
    return w;
}

void withdraw()
{
    Watcher &w = watcher();
    if (w.shown && w.notifier)
        w.notifier->withdraw();
    w.shown = false;
}

// Every tick of the work countdown (and every start and stop of a countdown).
void look()
{
    Watcher &w = watcher();
    const int lead = PrefInterruptState::instance()->headsUpSeconds();
    if (lead == 0 && !w.shown)
        return;
    const qint64 left = TicktackController::remaining(AppState::workState());
    if (lead == 0 || left <= 0 || left > lead) {
        // Stopped, started again, postponed, or the break is here.
        withdraw();
        w.done = false;
        return;
    }
    if (w.done || !w.notifier)
        return;
    w.done = true;
    w.shown = true;
    QList<Notifier::Action> actions;
    PromptState *prompt = AppState::promptState();
    if (prompt->canPostpone())
        actions.append({QStringLiteral("postpone"), NARV_TR("Postpone")});
    if (prompt->canSkipComing())
        actions.append({QStringLiteral("skip"), NARV_TR("Skip this break")});
    LOG_INFO(QStringLiteral("heads-up: break in %1 seconds").arg(left));
    w.notifier->show(NARV_TR("Break in %1 seconds").arg(left), actions);
}
} // namespace

void HeadsUp::install(std::unique_ptr<Notifier> notifier)
{
    Watcher &w = watcher();
    withdraw();
    w.notifier = std::move(notifier);
    if (!w.notifier)
        return;
    TicktackState *work = AppState::workState();
    QObject::connect(work, &TicktackState::timeStringChanged, w.notifier.get(), look);
    QObject::connect(CycleEvents::instance(), &CycleEvents::changed, w.notifier.get(), look);
    QObject::connect(CycleEvents::instance(), &CycleEvents::breakStarted, w.notifier.get(),
                     withdraw);
    QObject::connect(w.notifier.get(), &Notifier::closed, w.notifier.get(),
                     [] { watcher().shown = false; });
    QObject::connect(w.notifier.get(), &Notifier::actionInvoked, w.notifier.get(),
                     [](const QString &key) {
                         watcher().shown = false;
                         LOG_INFO(QStringLiteral("heads-up: \"%1\" chosen").arg(key));
                         if (key == QLatin1String("postpone"))
                             AppState::promptState()->postpone();
                         else if (key == QLatin1String("skip"))
                             AppState::promptState()->skipComing();
                     });
}
