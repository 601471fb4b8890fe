#include "history/HistoryStore.h"
#include "history/HistoryWriter.h"

// The history module's entry points, looked up by name once it is loaded
// (see HistoryLog.h).
extern "C" Q_DECL_EXPORT HistoryLog *narv_history_open(const QString &path, qint64 keepDays,
                                                       const HistoryModule::Report &report)
{
    return new HistoryWriter(path, keepDays, report);
}

extern "C" Q_DECL_EXPORT bool narv_history_export_csv(const QString &path, const QDate &since,
                                                      QIODevice *out, QString *error)
{
    return HistoryStore::exportCsv(path, since, out, error);
}
