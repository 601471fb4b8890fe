#pragma once

#include "ClassicTrayIcon.h"

#include <QCoreApplication>

#include <memory>

// The classic tray icon needs QtWidgets and a QApplication, which most
// desktops (those with a StatusNotifierWatcher) never need: both come from a
// module of their own, narv_classictray, loaded only where no watcher is on
// the bus at start. A watcher that appears later takes over from the classic
// icon; one that goes away from a program started without the module leaves
// it without a status item until a panel offers one again.
namespace ClassicTray {
inline constexpr const char *fileName = "narv_classictray.so";
// QCoreApplication *(int &argc, char **argv)
inline constexpr const char *applicationEntry = "narv_classictray_create_application";
// ClassicTrayIcon *(QObject *parent), null when the session has no system tray
inline constexpr const char *iconEntry = "narv_classictray_create_icon";

// No session bus, or no StatusNotifierWatcher on it. Asked before the
// application object exists.
bool wanted();
// A QApplication from the module; null, with the reason in `error`, when the
// module cannot be loaded.
std::unique_ptr<QCoreApplication> createApplication(int &argc, char **argv, QString *error);
// Whether this process's application object can carry the classic icon.
bool isAvailable();
// Only where isAvailable(); null when the session has no system tray.
ClassicTrayIcon *createIcon(QObject *parent);
} // namespace ClassicTray
