// The history on real SQLite files: a version-1 file brought up to date and
// the rows past the kept days dropped, and the window's figures from the file
// where the program keeps it: days without rows, a water target of 0, a break
// on either side of midnight and the window moving on to a new day. What the
// program records, and a damaged or unwritable file, are history.sh's.
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "history/HistoryChart.h"
#include "history/HistoryStore.h"
#include "settings/PrefWaterState.h"

#include <QBuffer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

namespace {
constexpr qint64 day = 86400;
const QDate today(2026, 3, 10);

qint64 at(const QDate &date, int h, int m, int s = 0)
{
    return QDateTime(date, QTime(h, m, s)).toSecsSinceEpoch();
}
const qint64 now = at(today, 12, 0);

QString iso(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).toString(Qt::ISODate);
}

QString csv(const QString &path)
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    QString error;
    if (!HistoryStore::exportCsv(path, {}, &out, &error))
        return QStringLiteral("error: ") + error;
    return QString::fromUtf8(out.data());
}

HistoryEvent breakEnded(qint64 started, const char *ended, const char *kind = "short")
{
    return {QStringLiteral("break"), started, 60, 60, QLatin1String(kind), QLatin1String(ended), 0};
}
} // namespace

class TestHistory : public QObject {
    Q_OBJECT
    TestSupport::ScratchHome m_home;

private Q_SLOTS:
    // The window's rows, in the file where the program looks for it.
    void initTestCase()
    {
        qputenv("XDG_DATA_HOME", (m_home.path() + QStringLiteral("/data")).toUtf8());
        Clock::setNowSource([] { return QDateTime(today, QTime(12, 0)); });
        HistoryStore store(QStringLiteral("w"));
        QString problem;
        QVERIFY(store.open(HistoryModule::filePath(), 365, now, &problem));
        const QDate yesterday = today.addDays(-1);
        for (const HistoryEvent &event : {
                 breakEnded(at(yesterday, 23, 59, 30), "countdown"),
                 breakEnded(at(today, 0, 0, 10), "skip"),
                 breakEnded(at(today, 7, 0), "countdown", "greeting"),
                 breakEnded(at(today, 8, 0), "pause"),
                 HistoryEvent{QStringLiteral("work"), at(yesterday, 9, 0), 1500, 0, {}, {}, 0},
                 HistoryEvent{QStringLiteral("work"), at(yesterday, 10, 0), 1500, 0, {}, {}, 0},
                 HistoryEvent{QStringLiteral("drink"), at(today, 9, 0), 0, 0, {}, {}, 300},
             })
            QVERIFY(store.add(event, &problem));
    }

    void daysAroundMidnight()
    {
        AppState::waterState()->setTarget(0);
        HistoryChart chart;
        // Day `i` of the chart (-1: today), its figure `key`.
        const auto day = [&chart](int i, const char *key) {
            const QVariantList days = chart.days();
            return days.at(i < 0 ? days.size() + i : i).toMap().value(QLatin1String(key));
        };
        chart.refresh();
        QCOMPARE(chart.days().size(), 7);
        QCOMPARE(day(0, "date").toDate(), today.addDays(-6));
        for (int i = 0; i < 5; ++i)
            for (const char *key : {"taken", "skipped", "worked", "water"})
                QCOMPARE(day(i, key).toInt(), 0);
        QCOMPARE(day(5, "taken").toInt(), 1);
        QCOMPARE(day(5, "worked").toInt(), 50);
        // The greeting and the break a pause ended count neither way.
        QCOMPARE(day(-1, "taken").toInt(), 0);
        QCOMPARE(day(-1, "skipped").toInt(), 1);
        QCOMPARE(day(-1, "water").toInt(), 300);
        QCOMPARE(day(-1, "waterShare").toDouble(), 0.0);
        QCOMPARE(chart.mostBreaks(), 1);
        QCOMPARE(chart.mostWorked(), 50);

        // Past midnight, today is a new, empty day and yesterday holds today's rows.
        Clock::setNowSource([] { return QDateTime(today.addDays(1), QTime(0, 0, 5)); });
        chart.refresh();
        QCOMPARE(day(-1, "date").toDate(), today.addDays(1));
        QCOMPARE(day(-1, "skipped").toInt(), 0);
        QCOMPARE(day(-2, "skipped").toInt(), 1);
        Clock::setNowSource([] { return QDateTime(today, QTime(12, 0)); });
    }

    // A version-1 file (no `ended`, no days) keeps its rows, is brought to the
    // present version and takes the new rows; rows past the kept days go at
    // the next opening.
    void migratesAndPrunes()
    {
        const QString path = m_home.path() + QStringLiteral("/v1.sqlite");
        {
            QSqlDatabase db =
                QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("t"));
            db.setDatabaseName(path);
            QVERIFY(db.open());
            for (const QString &statement :
                 {QStringLiteral("CREATE TABLE events (id INTEGER PRIMARY KEY, kind TEXT NOT NULL, "
                                 "started INTEGER NOT NULL, seconds INTEGER NOT NULL DEFAULT 0, "
                                 "planned INTEGER NOT NULL DEFAULT 0, detail TEXT, ml INTEGER NOT "
                                 "NULL DEFAULT 0)"),
                  QStringLiteral("INSERT INTO events (kind, started, seconds, planned, detail) "
                                 "VALUES ('break', %1, 300, 300, 'short')")
                      .arg(now - 10 * day),
                  QStringLiteral("INSERT INTO events (kind, started, ml) VALUES ('drink', %1, 200)")
                      .arg(now - 31 * day),
                  QStringLiteral("PRAGMA user_version=1")})
                QVERIFY2(QSqlQuery(db).exec(statement), qPrintable(statement));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("t"));
        QCOMPARE(csv(path), QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                           "drink,%1,0,0,,,200\n"
                                           "break,%2,300,300,short,,0\n")
                                .arg(iso(now - 31 * day), iso(now - 10 * day)));
        HistoryStore store(QStringLiteral("s"));
        QString problem;
        QVERIFY(store.open(path, 30, now, &problem));
        QCOMPARE(problem, QString());
        QVERIFY(store.add(breakEnded(now, "skip", "long"), &problem));
        QCOMPARE(csv(path), QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                           "break,%1,300,300,short,,0\n"
                                           "break,%2,60,60,long,skip,0\n")
                                .arg(iso(now - 10 * day), iso(now)));
    }
};

QTEST_MAIN(TestHistory)
#include "tst_history.moc"
