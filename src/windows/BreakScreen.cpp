#include "windows/BreakScreen.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "windows/CountdownCommand.h"
#include "windows/WindowController.h"

#include <QQmlEngine>

BreakScreen *BreakScreen::create(QQmlEngine *, QJSEngine *)
{
    // The states live as long as the process; the engine must never delete them.
    QQmlEngine::setObjectOwnership(AppState::promptState(), QQmlEngine::CppOwnership);
    QQmlEngine::setObjectOwnership(AppState::breakState(), QQmlEngine::CppOwnership);
    return new BreakScreen;
}

PromptState *BreakScreen::promptState() const
{
    return AppState::promptState();
}

TicktackState *BreakScreen::breakState() const
{
    return AppState::breakState();
}

void BreakScreen::skipAction()
{
    logger().log(LogLevel::Info, QStringLiteral("skip break view"), {},
                 LogSource{"BreakView", "skipAction()", __LINE__});
    CountdownCommands::send(CountdownCommand::closeBreak);
}

void BreakScreen::postponeAction()
{
    logger().log(LogLevel::Info, QStringLiteral("postpone break view"), {},
                 LogSource{"BreakView", "postponeAction()", __LINE__});
    CountdownCommands::send(CountdownCommand::postponeBreak);
}

void BreakScreen::openWaterReminder()
{
    logger().log(LogLevel::Info, QStringLiteral("Click new feature: Water Reminder"), {},
                 LogSource{"BreakView", "body", __LINE__});
    skipAction();
    WindowController::showPrefView();
}
