#include "statusbar/MenuAction.h"

#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "app/PauseFor.h"
#include "windows/WindowController.h"

#include <QCoreApplication>

namespace {
std::function<std::unique_ptr<MailComposer>()> &mailService()
{
    static std::function<std::unique_ptr<MailComposer>()> provider;
    return provider;
}
} // namespace

void MenuAction::didClickPause(Sender)
{
    AppState::setManualPause(!AppState::manualPause());
}

void MenuAction::didClickPauseFor30(Sender)
{
    PauseFor::pauseUntil(Clock::now().addSecs(30 * 60));
}

void MenuAction::didClickPauseFor60(Sender)
{
    PauseFor::pauseUntil(Clock::now().addSecs(60 * 60));
}

void MenuAction::didClickPauseUntilTomorrow(Sender)
{
    PauseFor::pauseUntil(PauseFor::tomorrow());
}

void MenuAction::didClickWater(Sender)
{
    WindowController::toggleWaterView();
}

void MenuAction::didClickSettings(Sender)
{
    WindowController::showPrefView();
}

void MenuAction::didClickHistory(Sender)
{
    WindowController::showHistory();
}

void MenuAction::didClickUpdates(Sender)
{
    WindowController::showUpdater();
}

void MenuAction::didClickFeedback(Sender)
{
    const QString body = feedbackBody();
    std::unique_ptr<MailComposer> composer = mailService() ? mailService()() : nullptr;
    if (!composer)
        return;
    composer->compose(AppInfo::feedbackAddress(), feedbackSubject(), body, Logger::logfilePath());
}

void MenuAction::didClickAbout(Sender)
{
    WindowController::showAbout();
}

void MenuAction::didClickQuit(Sender)
{
    if (!QCoreApplication::instance())
        qFatal("Fatal error: Quit chosen without an application object");
    LOG_INFO(QStringLiteral("quit from the menu"));
    QCoreApplication::quit();
}

void MenuAction::setMailService(std::function<std::unique_ptr<MailComposer>()> provider)
{
    mailService() = std::move(provider);
}

QString MenuAction::feedbackBody()
{
    return NARV_TR("Please use Chinese or English in your mail, if you can.") +
           QStringLiteral("\n\n\n\n\n\n\n\n") + NARV_TR("App version") + QStringLiteral(": v") +
           AppInfo::version() + u'(' + AppInfo::build() + QStringLiteral(")\n") +
           NARV_TR("Device model") + QStringLiteral(": ") + AppInfo::model() + u'\n' +
           NARV_TR("System version") + QStringLiteral(": ") + AppInfo::osVersion() + u'\n';
}

QString MenuAction::feedbackSubject()
{
    return AppInfo::name() + u' ' + NARV_TR("Feedback");
}
