#include "Module.h"

#include "app/Log.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLibrary>

namespace {
struct Loaded {
    QString path;    // empty when it could not be loaded
    QString failure; // why not
};

const Loaded &load(const char *fileName)
{
    static QHash<QByteArray, Loaded> modules;
    const auto it = modules.constFind(fileName);
    if (it != modules.constEnd())
        return *it;
    Loaded loaded;
    QStringList errors;
    for (const QString &candidate : Module::candidates(fileName)) {
        if (!QFileInfo::exists(candidate))
            continue;
        QLibrary library(candidate);
        // What it registers with Qt (types, resources) stays in use.
        library.setLoadHints(QLibrary::PreventUnloadHint);
        if (library.load()) {
            loaded.path = candidate;
            break;
        }
        errors.append(library.errorString());
    }
    if (loaded.path.isEmpty())
        loaded.failure = errors.isEmpty() ? QStringLiteral("no ") + QLatin1String(fileName)
                                          : errors.join(QStringLiteral("; "));
    return *modules.insert(fileName, loaded);
}
} // namespace

QStringList Module::candidates(const char *fileName)
{
    // From the kernel: the application object may not exist yet.
    const QDir here = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
    return {here.filePath(QLatin1String(fileName)),
            QDir::cleanPath(here.filePath(QStringLiteral(NARV_MODULES_INSTALLED_DIR)) + u'/' +
                            QLatin1String(fileName))};
}

Module::Entry Module::resolve(const char *fileName, const char *entry)
{
    const Loaded &loaded = load(fileName);
    if (loaded.path.isEmpty())
        return {nullptr, QString(), loaded.failure};
    Entry found{QLibrary::resolve(loaded.path, entry), loaded.path, QString()};
    if (!found.function)
        found.error = QStringLiteral("no %1 in %2").arg(QLatin1String(entry), loaded.path);
    return found;
}

QFunctionPointer Module::loadAndSay(const char *fileName, const char *entry, const QString &what)
{
    // resolve() caches the loading, not the saying.
    static QHash<QByteArray, QFunctionPointer> tried;
    const QByteArray key = QByteArray(fileName) + '/' + entry;
    if (const auto it = tried.constFind(key); it != tried.constEnd())
        return *it;
    const Entry found = resolve(fileName, entry);
    if (found.function)
        LOG_INFO(QStringLiteral("%1 loaded from %2").arg(what, found.path));
    else
        LOG_ERROR(QStringLiteral("cannot load the %1 (%2)").arg(what, found.error));
    tried.insert(key, found.function);
    return found.function;
}
