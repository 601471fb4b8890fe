// A StatusNotifierWatcher for the end-to-end scripts: holds the watcher's
// name on the session bus until it is stopped, and prints each registration
// on a line of its own ("registered <service>/<path>").

#include "FakeStatusNotifierWatcher.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    FakeStatusNotifierWatcher watcher(QDBusConnection::sessionBus());
    if (!watcher.start()) {
        std::fprintf(stderr, "cannot take org.kde.StatusNotifierWatcher on the session bus\n");
        return 1;
    }
    QObject::connect(&watcher, &FakeStatusNotifierWatcher::StatusNotifierItemRegistered, &app,
                     [](const QString &item) {
                         std::printf("registered %s\n", qPrintable(item));
                         std::fflush(stdout);
                     });
    return app.exec();
}
