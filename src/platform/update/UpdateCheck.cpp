#include "UpdateCheck.h"

#include "AppcastUpdateChecker.h"
#include "ChildFeedFetcher.h"
#include "Module.h"
#include "UpdateModule.h"
#include "app/AppInfo.h"
#include "app/AppState.h"
#include "app/Log.h"
#include "settings/PreferencesStore.h"
#include "windows/WindowController.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

void UpdateCheck::install(UpdatePresenter *presenter)
{
    if (QFile::exists(QStringLiteral("/.flatpak-info"))) {
        LOG_INFO(QStringLiteral("running in Flatpak: updates come from Flatpak, no update check"));
        return;
    }
    auto *checker = new AppcastUpdateChecker(
        QUrl(AppInfo::updateFeed()), PreferencesStore::instance(), *AppState::prefState(),
        [] { return std::make_unique<ChildFeedFetcher>(); }, QCoreApplication::instance());
    if (presenter)
        checker->showOutcomes([presenter] { return presenter; });
    else
        checker->showOutcomes(UpdateModule::window);
    WindowController::setUpdateChecker(std::make_unique<AppcastUpdateFront>(checker));
    checker->start();
}

int UpdateCheck::runFetch(int &argc, char **argv)
{
    // Writes to the running Narv's log and deletes nothing.
    LogFile::join({});
    QCoreApplication app(argc, argv);
    using Create = FeedFetcher *(*)();
    const Module::Entry found =
        Module::resolve(UpdateModule::fetchModule, UpdateModule::fetchEntry);
    if (!found.function) {
        std::fprintf(stderr, "cannot load the update check (%s)\n", qPrintable(found.error));
        return 1;
    }
    std::unique_ptr<FeedFetcher> fetcher(reinterpret_cast<Create>(found.function)());
    fetcher->fetch(QUrl(QString::fromLocal8Bit(argv[2])),
                   [](const QByteArray &body, const QString &error) {
                       if (error.isEmpty())
                           std::fwrite(body.constData(), 1, size_t(body.size()), stdout);
                       else
                           std::fputs(qPrintable(error), stderr);
                       QCoreApplication::exit(error.isEmpty() ? 0 : 1);
                   });
    return app.exec();
}
