#include "ClassicTray.h"

#include "StatusNotifierItem.h"

#include "Module.h"

#include <dbus/dbus.h>

bool ClassicTray::wanted()
{
    // A private connection of a moment: the status item's own is made later,
    // on the event loop.
    DBusError error;
    dbus_error_init(&error);
    DBusConnection *bus = dbus_bus_get_private(DBUS_BUS_SESSION, &error);
    if (!bus) {
        dbus_error_free(&error);
        return true;
    }
    dbus_connection_set_exit_on_disconnect(bus, false);
    const bool watcher = dbus_bus_name_has_owner(bus, StatusNotifierItem::watcherService, &error) &&
                         !dbus_error_is_set(&error);
    dbus_error_free(&error);
    dbus_connection_close(bus);
    dbus_connection_unref(bus);
    return !watcher;
}

std::unique_ptr<QCoreApplication> ClassicTray::createApplication(int &argc, char **argv,
                                                                 QString *error)
{
    using Create = QCoreApplication *(*)(int &, char **);
    const Module::Entry found = Module::resolve(fileName, applicationEntry);
    if (error)
        *error = found.error;
    const auto create = reinterpret_cast<Create>(found.function);
    return std::unique_ptr<QCoreApplication>(create ? create(argc, argv) : nullptr);
}

bool ClassicTray::isAvailable()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return app && app->inherits("QApplication");
}

ClassicTrayIcon *ClassicTray::createIcon(QObject *parent)
{
    using Create = ClassicTrayIcon *(*)(QObject *);
    const auto create = reinterpret_cast<Create>(Module::resolve(fileName, iconEntry).function);
    return create ? create(parent) : nullptr;
}
