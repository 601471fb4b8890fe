#pragma once

#include <functional>
#include <optional>

// What the windows ask of the countdown beyond the settings they write (to
// which the counting process reacts by itself, see AppState.h). The window
// process sends these by number, the counting process runs them: both compile
// against this one table, and nothing else crosses in that direction.
enum class CountdownCommand : int {
    closeBreak = 1, // the break view was skipped or ran out: PromptState::closePrompt()
    restartWork,    // a new work time was set: AppState::restartWork()
    scheduleWater,  // the water reminder counts a new interval from now
    cancelWater,    // the water reminder is disarmed
    showWaterItem,  // the status menu gets its water item
    hideWaterItem,  // the status menu loses it
    postponeBreak,  // the break view's Postpone: PromptState::postpone()
};

namespace CountdownCommands {
// The command with this number, nothing for any other.
std::optional<CountdownCommand> fromRawValue(int rawValue);

// Runs the command in this process, where the countdown is.
void perform(CountdownCommand command);

// The window process hands its commands to the counting process through
// this; an empty one (the default) performs them here.
using Sender = std::function<void(CountdownCommand command)>;
void setSender(Sender sender);
// What the windows call.
void send(CountdownCommand command);
} // namespace CountdownCommands
