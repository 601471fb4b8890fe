#pragma once

#include <QString>
#include <QStringList>

// Parts of Narv that the counting process does without are built as modules
// of their own and loaded when they are first wanted: the windows, the update
// check and the classic tray icon. A loaded library costs resident memory
// even unused (relocations, static initialisers), so the program links none
// of what they need (see bench/findings.md). A module resolves the core's
// symbols against the program.
namespace Module {
// Where a module is looked for, in order: beside the executable (the build
// tree), then the installed library folder. Works before the application
// object exists.
QStringList candidates(const char *fileName);

struct Entry {
    QFunctionPointer function = nullptr; // null when it cannot be had
    QString path;                        // the module's, once loaded
    QString error;                       // why there is no function
};

// Loads the module `fileName` once, for the rest of the process, and looks
// up `entry` in it.
Entry resolve(const char *fileName, const char *entry);
// resolve(), said in the log once for each entry: "<what> loaded from
// <path>", or "cannot load the <what> (<why>)". Null when it cannot be had.
QFunctionPointer loadAndSay(const char *fileName, const char *entry, const QString &what);
} // namespace Module
