#include "UpdateModule.h"

#include "app/Log.h"
#include "app/Module.h"

#include <QHash>

namespace {
// Said in the log once for each entry: Module::resolve caches the loading,
// not the saying.
QFunctionPointer resolve(const char *fileName, const char *entry, const QString &what)
{
    static QHash<QByteArray, QFunctionPointer> tried;
    const QByteArray key = QByteArray(fileName) + '/' + entry;
    if (const auto it = tried.constFind(key); it != tried.constEnd())
        return *it;
    const Module::Entry found = Module::resolve(fileName, entry);
    if (found.function)
        LOG_INFO(QStringLiteral("%1 loaded from %2").arg(what, found.path));
    else
        LOG_ERROR(QStringLiteral("cannot load the %1 (%2)").arg(what, found.error));
    tried.insert(key, found.function);
    return found.function;
}
} // namespace

std::unique_ptr<FeedFetcher> UpdateModule::createFetcher()
{
    using Create = FeedFetcher *(*)();
    const auto create =
        reinterpret_cast<Create>(resolve(fetchModule, fetchEntry, QStringLiteral("update check")));
    return std::unique_ptr<FeedFetcher>(create ? create() : nullptr);
}

UpdatePresenter *UpdateModule::window()
{
    using Get = UpdatePresenter *(*)();
    const auto get =
        reinterpret_cast<Get>(resolve(windowModule, windowEntry, QStringLiteral("update window")));
    return get ? get() : nullptr;
}
