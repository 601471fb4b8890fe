#include "UpdateCheck.h"

#include "AppcastUpdateChecker.h"
#include "UpdateModule.h"
#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/Log.h"
#include "settings/PreferencesStore.h"
#include "windows/WindowController.h"

#include <QCoreApplication>
#include <QFile>

void UpdateCheck::install(UpdatePresenter *presenter)
{
    if (QFile::exists(QStringLiteral("/.flatpak-info"))) {
        LOG_INFO(QStringLiteral("running in Flatpak: updates come from Flatpak, no update check"));
        return;
    }
    auto *checker = new AppcastUpdateChecker(
        QUrl(AppInfo::updateFeed()), PreferencesStore::instance(), *AppState::prefState(),
        UpdateModule::createFetcher, QCoreApplication::instance());
    if (presenter)
        checker->showOutcomes([presenter] { return presenter; });
    else
        checker->showOutcomes(UpdateModule::window);
    WindowController::setUpdateChecker(std::make_unique<AppcastUpdateFront>(checker));
    checker->start();
}
