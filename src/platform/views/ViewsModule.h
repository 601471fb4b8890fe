#pragma once

#include "services/WindowBackend.h"

#include <memory>

// Everything Narv draws with Qt Quick (the break windows, the water panel, the
// settings and About windows) is built into a module of its own, narv_views,
// which is loaded when the first of those windows is wanted. Until then the
// process holds none of Qt Quick and QML, which would otherwise be most of
// what it keeps resident while it only counts down in the tray (see
// bench/results.md).
namespace ViewsModule {
// The module's file name.
inline constexpr const char *fileName = "narv_views.so";
// The function the module exports: makes its window backend, owned by the caller.
inline constexpr const char *entryPoint = "narv_views_create_window_backend";

// int (int &argc, char **argv): the window process's main (ViewsProcess.h).
inline constexpr const char *processEntryPoint = "narv_views_run";
// The option that makes the program the window process.
inline constexpr const char *processOption = "--views";
// The environment variable that hands the window process the counting
// process's log file.
inline constexpr const char *logFileVariable = "NARV_LOG_FILE";

// A window backend that loads the module when a window is first wanted and
// from then on leaves everything to the module's own backend. Closing before
// anything was shown needs no module.
// For a program whose application object can show windows itself.
std::unique_ptr<WindowBackend> windowBackend();
// Runs the program as the window process: loads the module and runs its main.
int runProcess(int &argc, char **argv);
} // namespace ViewsModule
