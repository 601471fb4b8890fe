#include "history/HistoryStore.h"

#include <QBuffer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr qint64 day = 86400;
const qint64 now = QDateTime(QDate(2026, 3, 10), QTime(12, 0)).toSecsSinceEpoch();

// Runs statements on the file outside the store, as an older Narv would have.
void sql(const QString &path, const QStringList &statements)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("t"));
        db.setDatabaseName(path);
        QVERIFY(db.open());
        for (const QString &statement : statements) {
            QSqlQuery query(db);
            QVERIFY2(query.exec(statement), qPrintable(statement));
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("t"));
}

QString csv(const QString &path, const QDate &since = {})
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    QString error;
    if (!HistoryStore::exportCsv(path, since, &out, &error))
        return QStringLiteral("error: ") + error;
    return QString::fromUtf8(out.data());
}

QString at(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).toString(Qt::ISODate);
}
} // namespace

class TestHistoryStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }

    // A version-1 file (no `ended`, no days) keeps its rows, is brought to the
    // present version and takes the new rows and targets; rows and targets
    // past the kept days go at the next opening.
    void migratesAndPrunes()
    {
        const QString path = m_dir.filePath(QStringLiteral("v1.sqlite"));
        sql(path,
            {QStringLiteral("CREATE TABLE events (id INTEGER PRIMARY KEY, kind TEXT NOT "
                            "NULL, started INTEGER NOT NULL, seconds INTEGER NOT NULL "
                            "DEFAULT 0, planned INTEGER NOT NULL DEFAULT 0, detail TEXT, ml "
                            "INTEGER NOT NULL DEFAULT 0)"),
             QStringLiteral("INSERT INTO events (kind, started, seconds, planned, detail) "
                            "VALUES ('break', %1, 300, 300, 'short')")
                 .arg(now - 10 * day),
             QStringLiteral("INSERT INTO events (kind, started, ml) VALUES ('drink', %1, 200)")
                 .arg(now - 31 * day),
             QStringLiteral("PRAGMA user_version=1")});
        QCOMPARE(csv(path), QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                           "drink,%1,0,0,,,200\n"
                                           "break,%2,300,300,short,,0\n")
                                .arg(at(now - 31 * day), at(now - 10 * day)));
        QString problem;
        const QList<std::pair<qint64, qint64>> targets{{now, 2000},
                                                       {now - 40 * day, 1000},
                                                       {now - 10 * day, 1200},
                                                       {now - 10 * day + 60, 1500}};
        for (const auto &[when, ml] : targets) {
            HistoryStore store(QStringLiteral("s"));
            QVERIFY(store.open(path, 30, now, &problem));
            QCOMPARE(problem, QString());
            QVERIFY(store.add({QStringLiteral("target"), when, 0, 0, {}, {}, ml}, &problem));
        }
        HistoryStore store(QStringLiteral("s"));
        QVERIFY(store.open(path, 30, now, &problem));
        QVERIFY(store.add({QStringLiteral("break"), now, 12, 60, QStringLiteral("long"),
                           QStringLiteral("skip"), 0},
                          &problem));
        QCOMPARE(csv(path), QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                           "break,%1,300,300,short,,0\n"
                                           "break,%2,12,60,long,skip,0\n")
                                .arg(at(now - 10 * day), at(now)));
        QCOMPARE(csv(path, QDateTime::fromSecsSinceEpoch(now).date()),
                 QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                "break,%1,12,60,long,skip,0\n")
                     .arg(at(now)));
        // The last target set on a day is that day's.
        QList<HistoryEvent> events;
        QMap<QDate, qint64> kept;
        QVERIFY(HistoryStore::read(path, {}, &events, &problem, &kept));
        const auto date = [](qint64 when) { return QDateTime::fromSecsSinceEpoch(when).date(); };
        QCOMPARE(kept, (QMap<QDate, qint64>{{date(now - 10 * day), 1500}, {date(now), 2000}}));
    }

    // A file from a newer Narv is neither changed nor set aside.
    void leavesNewerFilesAlone()
    {
        const QString path = m_dir.filePath(QStringLiteral("v9.sqlite"));
        sql(path,
            {QStringLiteral("CREATE TABLE other (x)"), QStringLiteral("PRAGMA user_version=9")});
        HistoryStore store(QStringLiteral("s"));
        QString problem;
        QVERIFY(!store.open(path, 30, now, &problem));
        QVERIFY2(problem.contains(QLatin1String("newer Narv (version 9)")), qPrintable(problem));
        QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("v9.sqlite*")}, QDir::Files),
                 QStringList{QStringLiteral("v9.sqlite")});
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestHistoryStore)
#include "tst_historystore.moc"
