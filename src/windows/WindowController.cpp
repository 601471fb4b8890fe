#include "windows/WindowController.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/Log.h"
#include "settings/PrefWaterState.h"

namespace {
WindowController *g_current = nullptr;

std::unique_ptr<UpdateChecker> &updaterSlot()
{
    static std::unique_ptr<UpdateChecker> checker;
    return checker;
}

WindowBackend *slot()
{
    return WindowController::backend();
}

// Without a controller (core tests, a build without windows) the break still
// runs as state; say so once instead of on every break.
bool haveBackend()
{
    if (slot())
        return true;
    static bool reported = false;
    if (!reported) {
        LOG_NOTICE(QStringLiteral("no window backend: breaks run without break windows"));
        reported = true;
    }
    return false;
}
} // namespace

WindowController::WindowController(std::unique_ptr<WindowBackend> backend)
    : m_backend(std::move(backend)), m_previous(g_current)
{
    // The cycle says when its windows are wanted; the first controller
    // subscribes the functions below, which go to whichever controller is in use.
    static const bool subscribed = [] {
        CycleEvents *events = CycleEvents::instance();
        QObject::connect(events, &CycleEvents::breakStarted, events, &WindowController::showBreak);
        QObject::connect(events, &CycleEvents::breakEnded, events, &WindowController::closeBreak);
        QObject::connect(events, &CycleEvents::waterDue, events, &WindowController::showWaterView);
        QObject::connect(events, &CycleEvents::waterDayRestarted, events,
                         &WindowController::closeWaterView);
        return true;
    }();
    Q_UNUSED(subscribed);
    g_current = this;
}

WindowController::~WindowController()
{
    if (g_current == this)
        g_current = m_previous;
}

WindowBackend *WindowController::backend()
{
    return g_current ? g_current->m_backend.get() : nullptr;
}

void WindowController::setup()
{
    // The update checker is installed (and starts its own schedule) before
    // start-up; what is left here is the water reminder's first arming.
    PrefWaterState *water = AppState::waterState();
    if (water->enable()) {
        if (water->isNewDay())
            water->reset();
        water->schedule();
    }
}

void WindowController::showBreak()
{
    if (haveBackend())
        slot()->showBreak();
}

void WindowController::closeBreak()
{
    if (haveBackend())
        slot()->closeBreak();
}

void WindowController::showAbout()
{
    if (haveBackend())
        slot()->showAbout();
}

void WindowController::showHistory()
{
    if (haveBackend())
        slot()->showHistory();
}

void WindowController::showPrefView()
{
    if (haveBackend())
        slot()->showPrefView();
}

void WindowController::showWaterView()
{
    PrefWaterState *water = AppState::waterState();
    if (water->isNewDay())
        water->reset();
    if (haveBackend())
        slot()->showWaterView();
}

void WindowController::closeWaterView()
{
    if (haveBackend())
        slot()->closeWaterView();
}

void WindowController::toggleWaterView()
{
    if (!haveBackend())
        return;
    if (slot()->isWaterViewVisible())
        closeWaterView();
    else
        showWaterView();
}

void WindowController::setUpdateChecker(std::unique_ptr<UpdateChecker> checker)
{
    updaterSlot() = std::move(checker);
}

UpdateChecker *WindowController::updateChecker()
{
    return updaterSlot().get();
}

void WindowController::showUpdater()
{
    if (auto &checker = updaterSlot())
        checker->checkForUpdates();
    else
        LOG_NOTICE(QStringLiteral("this build does not check for updates"));
}
