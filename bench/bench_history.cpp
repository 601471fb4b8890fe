// How long the history window takes to open with a year of history: from the
// menu's command to the window's first frame. Three figures: in a fresh
// window process, where the QML engine and Qt Quick Controls are made first
// ("cold"); in one that has drawn another window already ("warm": the
// window's own cost, which the verdict is on); and opened again after it was
// closed. Prints one "key value" line per figure and the verdict against 200 ms.
//
//   bench_history      on an X server (bench/run starts one)

#include "history/HistoryStore.h"
#include "windows/QmlWindowBackend.h"
#include "windows/WindowController.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QQuickWindow>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <optional>

namespace {
constexpr qint64 limitMs = 200;

// A year as a busy user leaves it: a day of 16 work periods and breaks
// (every fourth long, one in five skipped), 3 pauses and 8 drinks.
bool writeYear(const QString &path, qint64 *rows)
{
    {
        HistoryStore store(QStringLiteral("make"));
        QString problem;
        if (!store.open(path, 365, QDateTime::currentSecsSinceEpoch(), &problem))
            return false;
    }
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("year"));
    db.setDatabaseName(path);
    if (!db.open())
        return false;
    db.transaction();
    QSqlQuery insert(db);
    insert.prepare(QStringLiteral("INSERT INTO events (kind, started, seconds, planned, detail, "
                                  "ended, ml) VALUES (?, ?, ?, ?, ?, ?, ?)"));
    const auto add = [&](const char *kind, qint64 started, qint64 seconds, qint64 planned,
                         const char *detail, const char *ended, qint64 ml) {
        insert.addBindValue(QLatin1String(kind));
        insert.addBindValue(started);
        insert.addBindValue(seconds);
        insert.addBindValue(planned);
        insert.addBindValue(QLatin1String(detail));
        insert.addBindValue(QLatin1String(ended));
        insert.addBindValue(ml);
        ++*rows;
        return insert.exec();
    };
    const QDate today = QDate::currentDate();
    for (int d = 364; d >= 0; --d) {
        qint64 t = QDateTime(today.addDays(-d), QTime(8, 0)).toSecsSinceEpoch();
        for (int i = 0; i < 16; ++i) {
            add("work", t, 1500, 0, "", "", 0);
            t += 1500;
            const bool skipped = i % 5 == 4;
            add("break", t, skipped ? 20 : 300, 300, i % 4 == 3 ? "long" : "short",
                skipped ? "skip" : "countdown", 0);
            t += 300;
            if (i % 2 == 0)
                add("drink", t, 0, 0, "", "", 250);
            if (i % 5 == 0)
                add("pause", t, 600, 0, "manual", "", 0);
        }
    }
    const bool ok = db.commit();
    db.close();
    return ok;
}
} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toUtf8());
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    QGuiApplication app(argc, argv);
    qint64 rows = 0;
    if (!writeYear(home.filePath(QStringLiteral("data/narv/history.sqlite")), &rows)) {
        std::fprintf(stderr, "bench_history: cannot write the year\n");
        return 1;
    }
    QSqlDatabase::removeDatabase(QStringLiteral("year"));

    std::optional<WindowController> windows(std::in_place, std::make_unique<QmlWindowBackend>());
    // Milliseconds from `show` to the first frame of the window titled `title`.
    const auto open = [](void (*show)(), const QString &title) {
        QElapsedTimer clock;
        clock.start();
        qint64 ms = -1;
        show();
        QQuickWindow *window = nullptr;
        for (QWindow *w : QGuiApplication::topLevelWindows())
            if (w->title() == title)
                window = qobject_cast<QQuickWindow *>(w);
        if (!window)
            return ms;
        QEventLoop loop;
        QObject::connect(window, &QQuickWindow::frameSwapped, &loop, [&] {
            ms = clock.elapsed();
            loop.quit();
        });
        QTimer::singleShot(10000, &loop, &QEventLoop::quit); // no frame: -1
        loop.exec();
        window->close();
        return ms;
    };
    const QString history = QStringLiteral("History");
    if (app.arguments().contains(QLatin1String("--warm"))) {
        open(WindowController::showAbout, QStringLiteral("About Narv"));
        const qint64 warm = open(WindowController::showHistory, history);
        const qint64 again = open(WindowController::showHistory, history);
        std::printf("%lld %lld\n", static_cast<long long>(warm), static_cast<long long>(again));
        windows.reset();
        return 0;
    }
    const qint64 cold = open(WindowController::showHistory, history);
    QProcess warmRun;
    warmRun.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--warm")});
    warmRun.waitForFinished(60000);
    // The last line: the log goes to standard output as well.
    const QList<QByteArray> figures =
        warmRun.readAllStandardOutput().trimmed().split('\n').last().split(' ');
    const qint64 warm = figures.value(0, "-1").toLongLong();
    const qint64 again = figures.value(1, "-1").toLongLong();
    std::printf("history_rows %lld\n", static_cast<long long>(rows));
    std::printf("history_window_cold_ms %lld\n", static_cast<long long>(cold));
    std::printf("history_window_warm_ms %lld\n", static_cast<long long>(warm));
    std::printf("history_window_again_ms %lld\n", static_cast<long long>(again));
    std::printf("bench: history window, a year of history (%lld rows): %lld ms with the engine "
                "made, %lld ms again, %lld ms in a fresh window process: %s\n",
                static_cast<long long>(rows), static_cast<long long>(warm),
                static_cast<long long>(again), static_cast<long long>(cold),
                warm >= 0 && warm < limitMs && again >= 0 && again < limitMs
                    ? "met (< 200 ms)"
                    : "NOT met (< 200 ms)");
    windows.reset();
    return 0;
}
