#pragma once

#include "history/HistoryLog.h"

#include <QMap>
#include <QString>

class QIODevice;
class QSqlDatabase;
class QSqlError;

// The history file: SQLite through Qt SQL, one table of events. Used from one
// thread at a time (the writer's, or the `narv history` command's).
//
// Schema versions (PRAGMA user_version):
//  1  events(id, kind, started, seconds, planned, detail, ml)
//  2  adds how a break ended (ended) and an index on started
//  3  adds days(day, water_target): each day's water target (ml), the day as
//     the local date in ISO form
class HistoryStore {
public:
    static constexpr int schemaVersion = 3;

    // `connection` names the Qt SQL connection; one per store.
    explicit HistoryStore(const QString &connection);
    ~HistoryStore();
    HistoryStore(const HistoryStore &) = delete;
    HistoryStore &operator=(const HistoryStore &) = delete;

    // Opens or creates the file at `path`, brings it to schemaVersion and
    // drops the rows older than `keepDays` before `now` (seconds since 1970).
    // A file SQLite calls damaged is renamed aside (never deleted) and a new
    // one begun. False when nothing can be written; `problem` says why, and
    // also says when a damaged file was set aside.
    bool open(const QString &path, qint64 keepDays, qint64 now, QString *problem);
    bool add(const HistoryEvent &event, QString *problem);
    void close();

    // Writes the rows from local midnight of `since` on (all of them for a
    // null date) as CSV with a header line, oldest first. Reads only.
    static bool exportCsv(const QString &path, const QDate &since, QIODevice *out, QString *error);
    // The same rows, for the window, and each day's water target where one
    // was kept (all of them, whatever `since`).
    static bool read(const QString &path, const QDate &since, QList<HistoryEvent> *events,
                     QString *error, QMap<QDate, qint64> *targets = nullptr);

private:
    QSqlDatabase database() const;
    bool prepare(qint64 keepDays, qint64 now, QSqlError *error, QString *problem);

    QString m_connection;
    QString m_path;
};
