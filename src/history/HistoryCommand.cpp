#include "history/HistoryCommand.h"

#include "Module.h"
#include "history/HistoryLog.h"

#include <QFile>
#include <QStandardPaths>

#include <cstdio>

namespace {
int fail(const QString &problem, int code)
{
    std::fprintf(stderr, "narv: %s\n", problem.toLocal8Bit().constData());
    return code;
}
} // namespace

QString HistoryModule::filePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/narv/history.sqlite");
}

int HistoryCommand::run(const QStringList &options)
{
    bool csv = false;
    QDate since;
    for (qsizetype i = 0; i < options.size(); ++i) {
        if (options[i] == QLatin1String("--csv")) {
            csv = true;
        } else if (options[i] == QLatin1String("--since") && i + 1 < options.size()) {
            since = QDate::fromString(options[++i], Qt::ISODate);
            if (!since.isValid())
                return fail(
                    QStringLiteral("--since wants a date as YYYY-MM-DD, not %1").arg(options[i]),
                    2);
        } else {
            return fail(QStringLiteral("unknown option for history: %1").arg(options[i]), 2);
        }
    }
    if (!csv)
        return fail(QStringLiteral("history: say --csv (the one format there is)"), 2);

    const Module::Entry entry =
        Module::resolve(HistoryModule::fileName, HistoryModule::exportEntry);
    if (!entry.function)
        return fail(QStringLiteral("cannot load the history (%1)").arg(entry.error), 1);
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly))
        return fail(QStringLiteral("cannot write to standard output"), 1);
    QString error;
    if (!reinterpret_cast<HistoryModule::Export>(entry.function)(HistoryModule::filePath(), since,
                                                                 &out, &error))
        return fail(error, 1);
    return 0;
}
