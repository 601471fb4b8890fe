#pragma once

#include <QStringList>

// `narv history --csv [--since YYYY-MM-DD]`: the history file as CSV on
// standard output. Reads the file itself; needs no running Narv.
namespace HistoryCommand {
// The process's exit code: 0, 1 when the file cannot be read, 2 for bad options.
int run(const QStringList &options);
} // namespace HistoryCommand
