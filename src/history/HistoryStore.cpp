#include "history/HistoryStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <limits>

namespace {
constexpr qint64 secondsPerDay = 86400;

// SQLITE_CORRUPT and SQLITE_NOTADB: the file is there but is no sound database.
bool isDamage(const QSqlError &error)
{
    const int code = error.nativeErrorCode().toInt() & 0xff;
    return code == 11 || code == 26;
}

QString describe(const QSqlError &error)
{
    const QString text = error.databaseText().isEmpty() ? error.text() : error.databaseText();
    return text.trimmed();
}

// Runs `sql`; on failure leaves the error in *error.
bool run(QSqlDatabase db, const QString &sql, QSqlError *error, QVariant *firstValue = nullptr)
{
    QSqlQuery query(db);
    if (!query.exec(sql)) {
        *error = query.lastError();
        return false;
    }
    if (firstValue && query.next())
        *firstValue = query.value(0);
    return true;
}

// A day as the days table keys it: the local date.
QString dayKey(const QDateTime &time)
{
    return time.toLocalTime().date().toString(Qt::ISODate);
}

QString csvField(const QString &text)
{
    if (!text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n'))
        return text;
    QString quoted = text;
    quoted.replace(QStringLiteral("\""), QStringLiteral("\"\""));
    return u'"' + quoted + u'"';
}
} // namespace

HistoryStore::HistoryStore(const QString &connection) : m_connection(connection)
{
}

HistoryStore::~HistoryStore()
{
    close();
}

QSqlDatabase HistoryStore::database() const
{
    return QSqlDatabase::database(m_connection, false);
}

void HistoryStore::close()
{
    if (!QSqlDatabase::contains(m_connection))
        return;
    database().close();
    QSqlDatabase::removeDatabase(m_connection);
}

bool HistoryStore::open(const QString &path, qint64 keepDays, qint64 now, QString *problem)
{
    close();
    m_path = path;
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        *problem = QStringLiteral("cannot make the folder of %1").arg(path);
        return false;
    }
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    if (!db.isValid()) {
        *problem = QStringLiteral("no SQLite driver for Qt SQL (%1)").arg(describe(db.lastError()));
        return false;
    }
    db.setDatabaseName(path);
    QSqlError error;
    if (db.open() && prepare(keepDays, now, &error, problem))
        return true;
    if (!db.isOpen())
        error = db.lastError();
    if (!problem->isEmpty())
        return false;
    if (!isDamage(error)) {
        *problem = QStringLiteral("cannot open %1 (%2)").arg(path, describe(error));
        return false;
    }

    // Kept for whoever wants to rescue it; a new file takes its place.
    db.close();
    const QString aside =
        path + QStringLiteral(".damaged-") +
        QDateTime::fromSecsSinceEpoch(now).toString(QStringLiteral("yyyyMMddHHmmss"));
    if (!QFile::rename(path, aside)) {
        *problem =
            QStringLiteral("%1 is damaged (%2) and cannot be set aside").arg(path, describe(error));
        return false;
    }
    for (const char *suffix : {"-wal", "-shm"})
        QFile::rename(path + QLatin1String(suffix), aside + QLatin1String(suffix));
    *problem = QStringLiteral("%1 is damaged (%2); kept as %3, starting a new history")
                   .arg(path, describe(error), aside);
    QSqlError again;
    QString unused;
    if (db.open() && prepare(keepDays, now, &again, &unused))
        return true;
    *problem += QStringLiteral(", which cannot be opened either (%1)")
                    .arg(describe(db.isOpen() ? again : db.lastError()));
    return false;
}

bool HistoryStore::prepare(qint64 keepDays, qint64 now, QSqlError *error, QString *problem)
{
    QSqlDatabase db = database();
    QVariant value;
    if (!run(db, QStringLiteral("PRAGMA user_version"), error, &value))
        return false;
    const int version = value.toInt();
    if (version > schemaVersion) {
        *problem = QStringLiteral("%1 was written by a newer Narv (version %2); leaving it alone")
                       .arg(m_path)
                       .arg(version);
        return false;
    }
    // Readers (the window, `narv history`) do not wait for the writer. Not
    // before the version is known: the journal mode is kept in the file.
    if (!run(db, QStringLiteral("PRAGMA journal_mode=WAL"), error, &value))
        return false;
    // Safe with WAL; spares a sync on every row.
    run(db, QStringLiteral("PRAGMA synchronous=NORMAL"), error);
    if (version < schemaVersion) {
        db.transaction();
        QStringList steps;
        if (version < 1)
            steps << QStringLiteral("CREATE TABLE IF NOT EXISTS events (id INTEGER PRIMARY KEY, "
                                    "kind TEXT NOT NULL, started INTEGER NOT NULL, "
                                    "seconds INTEGER NOT NULL DEFAULT 0, planned INTEGER NOT NULL "
                                    "DEFAULT 0, detail TEXT, ml INTEGER NOT NULL DEFAULT 0)");
        if (version < 2)
            steps << QStringLiteral("ALTER TABLE events ADD COLUMN ended TEXT")
                  << QStringLiteral("CREATE INDEX IF NOT EXISTS events_started ON events(started)");
        if (version < 3)
            steps << QStringLiteral("CREATE TABLE IF NOT EXISTS days (day TEXT PRIMARY KEY, "
                                    "water_target INTEGER NOT NULL)");
        steps << QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion);
        for (const QString &step : std::as_const(steps)) {
            if (!run(db, step, error)) {
                db.rollback();
                return false;
            }
        }
        if (!db.commit()) {
            *error = db.lastError();
            return false;
        }
    }
    QSqlQuery prune(db);
    prune.prepare(QStringLiteral("DELETE FROM events WHERE started < ?"));
    prune.addBindValue(now - keepDays * secondsPerDay);
    if (!prune.exec()) {
        *error = prune.lastError();
        return false;
    }
    return run(db,
               QStringLiteral("DELETE FROM days WHERE day < '%1'")
                   .arg(dayKey(QDateTime::fromSecsSinceEpoch(now - keepDays * secondsPerDay))),
               error);
}

bool HistoryStore::add(const HistoryEvent &event, QString *problem)
{
    QSqlQuery insert(database());
    if (event.kind == QLatin1String("target")) {
        // Set again the same day, the last one stands.
        insert.prepare(
            QStringLiteral("INSERT OR REPLACE INTO days (day, water_target) VALUES (?, ?)"));
        insert.addBindValue(dayKey(QDateTime::fromSecsSinceEpoch(event.started)));
        insert.addBindValue(event.ml);
    } else {
        insert.prepare(QStringLiteral("INSERT INTO events (kind, started, seconds, planned, "
                                      "detail, ended, ml) VALUES (?, ?, ?, ?, ?, ?, ?)"));
        insert.addBindValue(event.kind);
        insert.addBindValue(event.started);
        insert.addBindValue(event.seconds);
        insert.addBindValue(event.planned);
        insert.addBindValue(event.detail.isEmpty() ? QVariant() : QVariant(event.detail));
        insert.addBindValue(event.ended.isEmpty() ? QVariant() : QVariant(event.ended));
        insert.addBindValue(event.ml);
    }
    if (insert.exec())
        return true;
    *problem = QStringLiteral("cannot write to %1 (%2)").arg(m_path, describe(insert.lastError()));
    return false;
}

bool HistoryStore::read(const QString &path, const QDate &since, QList<HistoryEvent> *events,
                        QString *error, QMap<QDate, qint64> *targets)
{
    if (!QFileInfo::exists(path)) {
        *error = QStringLiteral("no history at %1").arg(path);
        return false;
    }
    const QString connection = QStringLiteral("narv-history-read");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        QSqlError failure;
        QVariant version;
        if (db.open() && run(db, QStringLiteral("PRAGMA user_version"), &failure, &version)) {
            // A version-1 file has no `ended`; it is read as it is, not migrated.
            const QString ended =
                version.toInt() >= 2 ? QStringLiteral("ended") : QStringLiteral("NULL");
            QSqlQuery query(db);
            query.setForwardOnly(true);
            query.prepare(QStringLiteral("SELECT kind, started, seconds, planned, detail, %1, ml "
                                         "FROM events WHERE started >= ? ORDER BY started, id")
                              .arg(ended));
            query.addBindValue(since.isValid() ? since.startOfDay().toSecsSinceEpoch()
                                               : std::numeric_limits<qint64>::min());
            if (query.exec()) {
                while (query.next())
                    events->append({query.value(0).toString(), query.value(1).toLongLong(),
                                    query.value(2).toLongLong(), query.value(3).toLongLong(),
                                    query.value(4).toString(), query.value(5).toString(),
                                    query.value(6).toLongLong()});
                ok = true;
            } else {
                failure = query.lastError();
            }
            // Every day's target (a year's at most): a day without one has the one before.
            QSqlQuery days(db);
            if (ok && targets && version.toInt() >= 3 &&
                !(ok = days.exec(QStringLiteral("SELECT day, water_target FROM days"))))
                failure = days.lastError();
            while (ok && targets && days.next())
                targets->insert(QDate::fromString(days.value(0).toString(), Qt::ISODate),
                                days.value(1).toLongLong());
        } else if (!db.isOpen()) {
            failure = db.lastError();
        }
        if (!ok)
            *error = QStringLiteral("cannot read %1 (%2)").arg(path, describe(failure));
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return ok;
}

bool HistoryStore::exportCsv(const QString &path, const QDate &since, QIODevice *out,
                             QString *error)
{
    QList<HistoryEvent> events;
    if (!read(path, since, &events, error))
        return false;
    out->write("kind,started,seconds,planned,detail,ended,ml\n");
    for (const HistoryEvent &e : std::as_const(events)) {
        const QStringList fields{
            csvField(e.kind),
            QDateTime::fromSecsSinceEpoch(e.started).toString(Qt::ISODate),
            QString::number(e.seconds),
            QString::number(e.planned),
            csvField(e.detail),
            csvField(e.ended),
            QString::number(e.ml),
        };
        out->write(fields.join(u',').toUtf8() + '\n');
    }
    return true;
}
