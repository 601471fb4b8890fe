#include "UpdateModule.h"

#include "app/Module.h"

std::unique_ptr<FeedFetcher> UpdateModule::createFetcher()
{
    using Create = FeedFetcher *(*)();
    const auto create = reinterpret_cast<Create>(
        Module::loadAndSay(fetchModule, fetchEntry, QStringLiteral("update check")));
    return std::unique_ptr<FeedFetcher>(create ? create() : nullptr);
}

UpdatePresenter *UpdateModule::window()
{
    using Get = UpdatePresenter *(*)();
    const auto get = reinterpret_cast<Get>(
        Module::loadAndSay(windowModule, windowEntry, QStringLiteral("update window")));
    return get ? get() : nullptr;
}
