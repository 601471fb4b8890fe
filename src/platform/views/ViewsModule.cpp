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
    void prepareBreak() override
    {
        if (m_loaded)
            m_loaded->prepareBreak();
    }
    void showBreak() override
    {
        if (WindowBackend *backend = load())
            backend->showBreak();
    }
    // Nothing is on the screen before the module is loaded.
    void closeBreak() override
    {
        if (m_loaded)
            m_loaded->closeBreak();
    }
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
    void closeWaterView() override
    {
        if (m_loaded)
            m_loaded->closeWaterView();
    }
    bool isWaterViewVisible() const override { return m_loaded && m_loaded->isWaterViewVisible(); }

private:
    // The module's backend, made when the first window is wanted; from then
    // on everything goes to it.
    WindowBackend *load()
    {
        if (!m_loaded) {
            if (const CreateBackend create = entry())
                m_loaded.reset(create());
        }
        return m_loaded.get();
    }

    std::unique_ptr<WindowBackend> m_loaded;
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
