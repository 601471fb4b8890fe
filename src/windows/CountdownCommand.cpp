#include "windows/CountdownCommand.h"

#include "app/AppState.h"
#include "settings/PrefWaterState.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"

namespace {
CountdownCommands::Sender &sender()
{
    static CountdownCommands::Sender installed;
    return installed;
}
} // namespace

std::optional<CountdownCommand> CountdownCommands::fromRawValue(int rawValue)
{
    switch (rawValue) {
    case int(CountdownCommand::closeBreak):
    case int(CountdownCommand::restartWork):
    case int(CountdownCommand::scheduleWater):
    case int(CountdownCommand::cancelWater):
    case int(CountdownCommand::showWaterItem):
    case int(CountdownCommand::hideWaterItem):
    case int(CountdownCommand::postponeBreak):
        return CountdownCommand(rawValue);
    default:
        return std::nullopt;
    }
}

void CountdownCommands::perform(CountdownCommand command)
{
    switch (command) {
    case CountdownCommand::closeBreak:
        AppState::promptState()->closePrompt();
        break;
    case CountdownCommand::restartWork:
        AppState::restartWork();
        break;
    case CountdownCommand::scheduleWater:
        AppState::waterState()->schedule();
        break;
    case CountdownCommand::cancelWater:
        AppState::waterState()->cancel();
        break;
    case CountdownCommand::showWaterItem:
        StatusBarController::insetWaterItem();
        break;
    case CountdownCommand::hideWaterItem:
        StatusBarController::removeWaterItem();
        break;
    case CountdownCommand::postponeBreak:
        AppState::promptState()->postpone();
        break;
    }
}

void CountdownCommands::setSender(Sender sender)
{
    ::sender() = std::move(sender);
}

void CountdownCommands::send(CountdownCommand command)
{
    if (sender())
        sender()(command);
    else
        perform(command);
}
