#include "water/WaterPanel.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/DelayedTask.h"
#include "app/Log.h"
#include "app/TicktackController.h"
#include "windows/CountdownCommand.h"
#include "windows/WindowController.h"

#include <QQmlEngine>

#include <cmath>

namespace {
// Whether a float or double has a whole part that fits a qint64. Also false
// for NaN. -2^63 and 2^63 are exact in both.
template <typename Real> bool fitsInt64(Real value)
{
    return value >= Real(-0x1p63) && value < Real(0x1p63);
}
} // namespace

WaterPanel::WaterPanel()
{
    PrefWaterState *water = AppState::waterState();
    connect(water, &PrefWaterState::amountsChanged, this, &WaterPanel::amountsChanged);
    m_doneTask = new DelayedTask(
        [] {
            WindowController::closeWaterView();
            CountdownCommands::send(CountdownCommand::scheduleWater);
        },
        this);
}

WaterPanel::~WaterPanel() = default;

WaterPanel *WaterPanel::create(QQmlEngine *, QJSEngine *)
{
    // The settings live as long as the process; the engine must never delete them.
    QQmlEngine::setObjectOwnership(AppState::waterState(), QQmlEngine::CppOwnership);
    return new WaterPanel;
}

PrefWaterState *WaterPanel::waterState() const
{
    return AppState::waterState();
}

QVariantList WaterPanel::amounts() const
{
    QVariantList list;
    for (qint64 amount : AppState::waterState()->amounts())
        list.append(amount);
    return list;
}

qint64 WaterPanel::wholePercent(float finishedPrecent)
{
    // Float arithmetic, as the status menu's water item does it, so both show
    // the same number for the same tally.
    const float scaled = finishedPrecent * 100.0f;
    if (!fitsInt64(scaled)) {
        qFatal("Fatal error: the water panel cannot show %g as a whole per cent "
               "(pref.water.target is %lld)",
               double(finishedPrecent), qlonglong(AppState::waterState()->target()));
    }
    return qint64(std::trunc(scaled));
}

qint64 WaterPanel::secondsToNextDrink()
{
    PrefWaterState *water = AppState::waterState();
    const double now = double(Clock::now().toMSecsSinceEpoch()) / 1000.0;
    const double elapsed = std::trunc(now - water->lastClickTimestamp()); // seconds
    if (!fitsInt64(elapsed)) {
        qFatal("Fatal error: %g seconds since pref.water.lastShowDate do not fit a whole number",
               elapsed);
    }
    qint64 interval = 0; // seconds
    qint64 remain = 0;   // seconds
    if (__builtin_mul_overflow(water->selectedInterval(), qint64(60), &interval) ||
        __builtin_sub_overflow(interval, qint64(elapsed), &remain)) {
        qFatal("Fatal error: Arithmetic overflow counting down to the next drink");
    }
    return remain;
}

QString WaterPanel::timeString(qint64 seconds)
{
    return ::timeString(seconds);
}

void WaterPanel::noteNotInWorkTime()
{
    logger().log(LogLevel::Info, QStringLiteral("Not in work time"), {},
                 LogSource{"WaterView", "updateTimer()", 207});
}

void WaterPanel::skipAction()
{
    WindowController::closeWaterView();
    CountdownCommands::send(CountdownCommand::scheduleWater);
}

void WaterPanel::doneAction()
{
    AppState::waterState()->updateFinished();
    m_doneTask->schedule(doneDelayMilliseconds);
}

void WaterPanel::closeAction()
{
    WindowController::closeWaterView();
}
