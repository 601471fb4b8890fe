#include "platform/windowhints/WindowHints.h"

#include "app/Log.h"
#include "platform/windowhints/X11WindowHints.h"

#include <QGuiApplication>

std::unique_ptr<WindowHints> WindowHints::forSession()
{
    if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        if (x11->connection())
            return std::make_unique<X11WindowHints>(x11->connection());
    }
    LOG_INFO(QStringLiteral("window hints: none for platform ") + QGuiApplication::platformName());
    return std::make_unique<NoWindowHints>();
}
