#include "ClassicTray.h"
#include "TrayIconFallback.h"
#include "app/AppInfo.h"

#include <QApplication>

// The module's entry points, looked up by name once it is loaded. The module
// resolves the core's symbols against the program (which exports them), so
// the icon's menu is the program's one menu model.

extern "C" Q_DECL_EXPORT QCoreApplication *narv_classictray_create_application(int &argc,
                                                                               char **argv)
{
    auto *app = new QApplication(argc, argv);
    QGuiApplication::setApplicationDisplayName(AppInfo::name());
    QGuiApplication::setDesktopFileName(AppInfo::identifier());
    // A tray program: closing its last window must not end it.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return app;
}

extern "C" Q_DECL_EXPORT ClassicTrayIcon *narv_classictray_create_icon(QObject *parent)
{
    return QSystemTrayIcon::isSystemTrayAvailable() ? new TrayIconFallback(parent) : nullptr;
}
