#include "platform/views/ViewsModule.h"

#include "Module.h"
#include "app/Log.h"

#include <cstdlib>

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
    const Module::Entry found = Module::resolve(ViewsModule::fileName, ViewsModule::entryPoint);
    create = reinterpret_cast<CreateBackend>(found.function);
    if (create)
        LOG_INFO(QStringLiteral("windows loaded from ") + found.path);
    else
        LOG_ERROR(QStringLiteral("cannot load the windows (%1): breaks run without break windows")
                      .arg(found.error));
    return create;
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
    void showHistory() override
    {
        if (WindowBackend *backend = load())
            backend->showHistory();
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

int ViewsModule::runProcess(int &argc, char **argv)
{
    using Main = int (*)(int &, char **);
    // The counting process owns the log and names its file.
    LogFile::join(qEnvironmentVariable(logFileVariable));
    qunsetenv(logFileVariable);
    const Module::Entry found = Module::resolve(fileName, processEntryPoint);
    if (!found.function) {
        LOG_ERROR(QStringLiteral("cannot load the windows (%1): the window process ends")
                      .arg(found.error));
        return EXIT_FAILURE;
    }
    LOG_INFO(QStringLiteral("windows loaded from ") + found.path);
    return reinterpret_cast<Main>(found.function)(argc, argv);
}
