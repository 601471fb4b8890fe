#pragma once

class DelayedTask;
class PrefState;
class PrefWaterState;
class PromptState;
class TicktackState;

// Process-wide state of the work/break cycle. Never instantiated.
//
// Assigning `working` always acts, also when the value is unchanged: true
// starts a full work period, false stops the countdown.
class AppState {
public:
    AppState() = delete;

    static bool working();
    static void setWorking(bool value);
    static bool manualPause();
    // Pausing stops the countdown; resuming starts a full work period.
    static void setManualPause(bool value);
    // A full work period from now, unless the user paused.
    static void restartWork();

    // The pending stop after mouse idleness; owned here, replaced by the next one.
    static DelayedTask *mouseMoveEventItem();
    static void setMouseMoveEventItem(DelayedTask *task);

    // Made on first use, kept until the process ends.
    static PromptState *promptState();
    static PrefState *prefState();
    static TicktackState *workState();
    static TicktackState *breakState();
    static PrefWaterState *waterState();
};
