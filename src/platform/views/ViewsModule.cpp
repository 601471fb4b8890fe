#include "platform/views/ViewsModule.h"

#include "app/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

namespace {

using CreateBackend = WindowBackend *(*)();

// Loads the module once; null (and said in the log, once) when it cannot be.
CreateBackend entry()
{
    static bool tried = false;
    static CreateBackend create = nullptr;
    if (tried)
        return create;
    tried = true;
    QStringList errors;
    for (const QString &path : ViewsModule::candidates()) {
        if (!QFileInfo::exists(path))
            continue;
        QLibrary library(path);
        // Its types stay registered with Qt for the rest of the process.
        library.setLoadHints(QLibrary::PreventUnloadHint);
        create = reinterpret_cast<CreateBackend>(library.resolve(ViewsModule::entryPoint));
        if (create) {
            LOG_INFO(QStringLiteral("windows loaded from ") + path);
            return create;
        }
        errors.append(library.errorString());
    }
    LOG_ERROR(QStringLiteral("cannot load the windows (%1): breaks run without break windows")
                  .arg(errors.isEmpty()
                           ? QStringLiteral("no ") + QLatin1String(ViewsModule::fileName)
                           : errors.join(QStringLiteral("; "))));
    return nullptr;
}

class LazyWindowBackend : public WindowBackend {
public:
    void showBreak() override
    {
        if (WindowBackend *backend = load())
            backend->showBreak();
    }
    // Nothing is on the screen before the module is loaded.
    void closeBreak() override {}
    void showAbout() override
    {
        if (WindowBackend *backend = load())
            backend->showAbout();
    }
    void showPrefView() override
    {
        if (WindowBackend *backend = load())
            backend->showPrefView();
    }
    void showWaterView() override
    {
        if (WindowBackend *backend = load())
            backend->showWaterView();
    }

private:
    // Puts the module's backend in this one's place: this object is deleted
    // on the way, so nothing of it may be touched after the call.
    static WindowBackend *load()
    {
        const CreateBackend create = entry();
        if (!create)
            return nullptr;
        WindowBackend *backend = create();
        WindowController::setBackend(std::unique_ptr<WindowBackend>(backend));
        return backend;
    }
};

} // namespace

std::unique_ptr<WindowBackend> ViewsModule::windowBackend()
{
    return std::make_unique<LazyWindowBackend>();
}

QStringList ViewsModule::candidates()
{
    QStringList paths;
    const QDir here(QCoreApplication::applicationDirPath());
    paths.append(here.filePath(QLatin1String(fileName)));
    paths.append(QDir::cleanPath(here.filePath(QStringLiteral(NARV_VIEWS_INSTALLED_DIR)) + u'/' +
                                 QLatin1String(fileName)));
    return paths;
}
