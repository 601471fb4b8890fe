// How long a break takes to reach the screen: from the moment the work
// countdown runs out to every break window being exposed and having drawn its
// first frame, for the first break (engine, QML and windows made) and for later
// ones (windows reused). Also the resident memory before and after the first
// break. Prints one "key value" line per measurement; bench/run turns them into
// bench/results.md.
//
//   bench_breakwindows [later-breaks]      on an X server (bench/run starts one)

#include "app/AppState.h"
#include "app/TickSource.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/PromptState.h"
#include "windows/QmlWindowBackend.h"
#include "windows/WindowController.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QQuickView>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <optional>
#include <vector>

namespace {

QElapsedTimer g_clock;

qint64 nowNs()
{
    return g_clock.nsecsElapsed();
}

// Resident set size in KiB, from /proc.
long rssKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

// When a window was last exposed and last presented a frame.
struct Seen : QObject {
    std::atomic<qint64> exposed{0};
    std::atomic<qint64> swapped{0};
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Expose && static_cast<QWindow *>(watched)->isExposed())
            exposed = nowNs();
        return false;
    }
};

struct Timing {
    double exposedMs = 0;
    double frameMs = 0;
};

class Bench {
public:
    Bench()
    {
        auto backend = std::make_unique<QmlWindowBackend>();
        m_backend = backend.get();
        m_windows.emplace(std::move(backend));
        TicktackController::setTimer(&m_ticks);
        // What the status item does when work runs out.
        QObject::connect(AppState::workState(), &TicktackState::timesUpChanged, [this] {
            if (AppState::workState()->timesUp()) {
                m_end = nowNs();
                AppState::promptState()->showBreak();
            }
        });
    }

    // Runs a work countdown of one second to its end and waits for the break.
    Timing oneBreak()
    {
        TicktackController::work(1);
        for (auto &seen : m_seen) {
            seen->exposed = 0;
            seen->swapped = 0;
        }
        m_ticks.advance(1); // the countdown's end
        watchNewWindows();
        const int screens = int(QGuiApplication::screens().size());
        QElapsedTimer timeout;
        timeout.start();
        while (timeout.elapsed() < 20000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            int ready = 0;
            for (auto &seen : m_seen)
                ready += seen->exposed > m_end && seen->swapped > m_end ? 1 : 0;
            if (ready >= screens)
                break;
        }
        Timing t;
        for (auto &seen : m_seen) {
            t.exposedMs = std::max(t.exposedMs, (seen->exposed - m_end) / 1e6);
            t.frameMs = std::max(t.frameMs, (seen->swapped - m_end) / 1e6);
        }
        return t;
    }

    // Ends the break and waits until the windows have faded out and gone.
    void endBreak()
    {
        AppState::promptState()->closePrompt();
        TicktackController::stop();
        settle(QmlWindowBackend::fadeMilliseconds + 500);
    }

    static void settle(int ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }

private:
    void watchNewWindows()
    {
        for (QQuickView *window : m_backend->breakWindows()) {
            if (m_watched.contains(window))
                continue;
            m_watched.append(window);
            auto seen = std::make_unique<Seen>();
            Seen *raw = seen.get();
            window->installEventFilter(raw);
            if (window->isExposed())
                raw->exposed = nowNs();
            // Emitted on the render thread with the threaded render loop.
            QObject::connect(
                window, &QQuickWindow::frameSwapped, raw, [raw] { raw->swapped = nowNs(); },
                Qt::DirectConnection);
            m_seen.push_back(std::move(seen));
        }
    }

    ManualTickSource m_ticks;
    QmlWindowBackend *m_backend = nullptr;
    std::optional<WindowController> m_windows; // goes with the bench, before the application
    QList<QQuickView *> m_watched;
    std::vector<std::unique_ptr<Seen>> m_seen;
    qint64 m_end = 0;
};

} // namespace

int main(int argc, char **argv)
{
    // A scratch home: the bench must not touch the user's settings or logs.
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_CACHE_HOME", (home.path() + QStringLiteral("/cache")).toUtf8());

    QGuiApplication app(argc, argv);
    const int later = argc > 1 ? std::max(1, atoi(argv[1])) : 5;
    g_clock.start();

    Bench bench;
    Bench::settle(500);
    std::printf("screens %lld\n", static_cast<long long>(QGuiApplication::screens().size()));
    std::printf("rss_before_kib %ld\n", rssKiB());

    const Timing first = bench.oneBreak();
    std::printf("first_exposed_ms %.1f\nfirst_frame_ms %.1f\n", first.exposedMs, first.frameMs);
    Bench::settle(1000);
    std::printf("rss_after_first_kib %ld\n", rssKiB());
    bench.endBreak();

    std::vector<double> exposed;
    std::vector<double> frames;
    for (int n = 0; n < later; ++n) {
        const Timing t = bench.oneBreak();
        exposed.push_back(t.exposedMs);
        frames.push_back(t.frameMs);
        bench.endBreak();
    }
    std::sort(exposed.begin(), exposed.end());
    std::sort(frames.begin(), frames.end());
    std::printf("later_breaks %d\n", later);
    std::printf("later_exposed_ms_median %.1f\nlater_exposed_ms_max %.1f\n",
                exposed[exposed.size() / 2], exposed.back());
    std::printf("later_frame_ms_median %.1f\nlater_frame_ms_max %.1f\n", frames[frames.size() / 2],
                frames.back());
    std::printf("rss_after_later_kib %ld\n", rssKiB());
    std::fflush(stdout);
    return 0;
}
