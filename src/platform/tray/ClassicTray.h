#pragma once

#include "ClassicTrayIcon.h"

#include <QCoreApplication>

#include <memory>

// Where a desktop has a StatusNotifierWatcher (most panels), the status item
// is a StatusNotifierItem over D-Bus, which needs neither QtWidgets nor QtGui.
// Only where none is on the bus at start is the classic tray icon wanted, and
// with it a QApplication; both come from a module of their own,
// narv_classictray, loaded then. A watcher that appears later takes over from
// the classic icon; one that goes away from a program started without the
// module leaves it without a status item until a panel offers one again.
namespace ClassicTray {
// The module's file name.
inline constexpr const char *fileName = "narv_classictray.so";
// Makes the QApplication: QCoreApplication *(int &argc, char **argv).
inline constexpr const char *applicationEntry = "narv_classictray_create_application";
// Makes the icon: ClassicTrayIcon *(QObject *parent), null when the session
// has no system tray.
inline constexpr const char *iconEntry = "narv_classictray_create_icon";

// Whether the classic icon is wanted: no session bus, or no
// StatusNotifierWatcher on it. Asked before the application object exists.
bool wanted();

// A QApplication from the module; null, with the reason in `error`, when the
// module cannot be loaded. Before the application object exists.
std::unique_ptr<QCoreApplication> createApplication(int &argc, char **argv, QString *error);

// Whether this process's application object can carry the classic icon.
bool isAvailable();
// The icon; null when the application object cannot carry it (see
// isAvailable()) or the session has no system tray.
ClassicTrayIcon *createIcon(QObject *parent);
} // namespace ClassicTray
