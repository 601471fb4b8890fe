// The history on real SQLite files: the store (a version-1 file brought up
// to date, rows and targets past the kept days dropped, a newer Narv's file
// left alone), and the window's figures from the file where the program
// keeps it: days without rows, a water target of 0, each day's own target, a
// break on either side of midnight, the window moving on to a new day, and
// the window itself, loaded as the program loads it.
#include "TestSupport.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "history/HistoryChart.h"
#include "history/HistoryStore.h"
#include "settings/PrefWaterState.h"

#include <QBuffer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

void qml_register_types_Narv_History();

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

HistoryEvent breakEnded(qint64 started, const char *ended, const char *kind = "short")
{
    return {QStringLiteral("break"), started, 60, 60, QLatin1String(kind), QLatin1String(ended), 0};
}
} // namespace

class TestHistory : public QObject {
    Q_OBJECT
    TestSupport::ScratchHome m_home;

private Q_SLOTS:
    // The window's rows, in the file where the program looks for it, which the window reads too.
    void initTestCase()
    {
        qputenv("XDG_DATA_HOME", (m_home.path() + QStringLiteral("/data")).toUtf8());
        Clock::setNowSource([] { return QDateTime(today, QTime(12, 0)); });
        HistoryStore store(QStringLiteral("w"));
        QString problem;
        QVERIFY(store.open(HistoryModule::filePath(), 365, at(today, 12, 0), &problem));
        const QDate yesterday = today.addDays(-1);
        for (const HistoryEvent &event : {
                 breakEnded(at(yesterday, 23, 59, 30), "countdown"),
                 breakEnded(at(today, 0, 0, 10), "skip"),
                 breakEnded(at(today, 7, 0), "countdown", "greeting"),
                 breakEnded(at(today, 8, 0), "pause"),
                 HistoryEvent{QStringLiteral("work"), at(yesterday, 9, 0), 1500, 0, {}, {}, 0},
                 HistoryEvent{QStringLiteral("work"), at(yesterday, 10, 0), 1500, 0, {}, {}, 0},
                 HistoryEvent{QStringLiteral("drink"), at(today, 9, 0), 0, 0, {}, {}, 300},
                 HistoryEvent{
                     QStringLiteral("drink"), at(today.addDays(-9), 9, 0), 0, 0, {}, {}, 900},
                 HistoryEvent{
                     QStringLiteral("target"), at(today.addDays(-9), 8, 0), 0, 0, {}, {}, 1800},
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
        QCOMPARE(chart.problem(), QString());
        QCOMPARE(chart.days().size(), 7);
        QCOMPARE(day(0, "date").toDate(), today.addDays(-6));
        for (int i = 0; i < 5; ++i)
            for (const char *key : {"taken", "skipped", "worked", "water"})
                QCOMPARE(day(i, key).toInt(), 0);
        QCOMPARE(day(5, "taken").toInt(), 1);
        QCOMPARE(day(5, "skipped").toInt(), 0);
        QCOMPARE(day(5, "worked").toInt(), 50);
        // The greeting and the break a pause ended count neither way.
        QCOMPARE(day(-1, "taken").toInt(), 0);
        QCOMPARE(day(-1, "skipped").toInt(), 1);
        QCOMPARE(day(-1, "water").toInt(), 300);
        QCOMPARE(day(-1, "waterShare").toDouble(), 0.0);
        QCOMPARE(chart.mostBreaks(), 1);
        QCOMPARE(chart.mostWorked(), 50);

        AppState::waterState()->setTarget(200);
        chart.setSpan(30);
        QCOMPARE(chart.days().size(), 30);
        QCOMPARE(chart.today().value("waterShare").toDouble(), 1.0);
        // A past day against its own target, kept until the next; before
        // the first one kept, today's.
        QCOMPARE(day(20, "water").toInt(), 900);
        QCOMPARE(day(20, "waterShare").toDouble(), 0.5);
        QCOMPARE(day(28, "target").toInt(), 1800);
        QCOMPARE(day(0, "target").toInt(), 200);

        // Past midnight, today is a new, empty day and yesterday holds today's rows.
        Clock::setNowSource([] { return QDateTime(today.addDays(1), QTime(0, 0, 5)); });
        chart.refresh();
        QCOMPARE(day(-1, "date").toDate(), today.addDays(1));
        QCOMPARE(day(-1, "skipped").toInt(), 0);
        QCOMPARE(day(28, "skipped").toInt(), 1);
        Clock::setNowSource([] { return QDateTime(today, QTime(12, 0)); });

        chart.setFilePath(m_home.path() + QStringLiteral("/none.sqlite"));
        chart.refresh();
        QVERIFY(chart.problem().startsWith(QLatin1String("no history at")));
        QCOMPARE(chart.mostBreaks(), 0);
    }

    void windowShowsToday()
    {
        qml_register_types_Narv_History();
        AppState::waterState()->setTarget(600);
        QQmlEngine engine;
        engine.addImportPath(QStringLiteral("qrc:/"));
        QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/Narv/History/HistoryView.qml")));
        std::unique_ptr<QObject> view(component.create());
        QVERIFY2(view, qPrintable(component.errorString()));
        auto *today = view->findChild<QObject *>(QStringLiteral("today"));
        QVERIFY(today);
        QCOMPARE(today->property("text").toString(),
                 QStringLiteral("Today: 0 breaks taken, 1 skipped; 0 min worked; 300 ml of water "
                                "(target 600 ml)"));
    }

    // A version-1 file (no `ended`, no days) keeps its rows, is brought to the
    // present version and takes the new rows and targets; rows and targets
    // past the kept days go at the next opening.
    void migratesAndPrunes()
    {
        const QString path = m_home.path() + QStringLiteral("/v1.sqlite");
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
                                .arg(iso(now - 31 * day), iso(now - 10 * day)));
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
                                .arg(iso(now - 10 * day), iso(now)));
        QCOMPARE(csv(path, QDateTime::fromSecsSinceEpoch(now).date()),
                 QStringLiteral("kind,started,seconds,planned,detail,ended,ml\n"
                                "break,%1,12,60,long,skip,0\n")
                     .arg(iso(now)));
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
        const QString path = m_home.path() + QStringLiteral("/v9.sqlite");
        sql(path,
            {QStringLiteral("CREATE TABLE other (x)"), QStringLiteral("PRAGMA user_version=9")});
        HistoryStore store(QStringLiteral("s"));
        QString problem;
        QVERIFY(!store.open(path, 30, now, &problem));
        QVERIFY2(problem.contains(QLatin1String("newer Narv (version 9)")), qPrintable(problem));
        QCOMPARE(QDir(m_home.path()).entryList({QStringLiteral("v9.sqlite*")}, QDir::Files),
                 QStringList{QStringLiteral("v9.sqlite")});
    }
};

QTEST_MAIN(TestHistory)
#include "tst_history.moc"
