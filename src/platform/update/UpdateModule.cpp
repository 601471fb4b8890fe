#include "UpdateModule.h"

#include "Module.h"

UpdatePresenter *UpdateModule::window()
{
    using Get = UpdatePresenter *(*)();
    const auto get = reinterpret_cast<Get>(
        Module::loadAndSay(windowModule, windowEntry, QStringLiteral("update window")));
    return get ? get() : nullptr;
}
