// Narv and the programs a user would pick instead of it, measured side by side
// on one X server and one session bus (bench/run starts both, and a stand-in
// system bus). For each run it starts the peers and the real build/narv, each
// in a scratch home, and walks Narv through a day in miniature:
//
//   start            how long until the status item registers with the
//                    StatusNotifierWatcher this program plays
//   +15 s            resident memory (RSS, PSS) of everyone, no window open yet
//   +15..45 s        CPU of everyone while xdotool moves the mouse without pause
//   +60 s            the first break: its accuracy (from the countdown's start to
//                    its end, read from Narv's log lines on standard output) and
//                    the time from the countdown's end to every break window
//                    mapped (X events)
//   then             the water panel from the status menu (a dbusmenu click),
//                    opened and closed, and Narv's memory after both, once
//                    its window process has ended (or with it, after 15 s)
//   60 s             CPU and wake-ups (voluntary context switches) of everyone
//   30 s             Narv counting with a `narv status --follow` client, the
//                    client measured as a process of its own
//   30 s             the same for Narv while paused from the menu
//   then             a few more breaks, each started from the menu with a
//                    work period of none once the windows of the one before
//                    have gone, for the time later breaks take to the screen
//
// It prints "sample <who> <what> <value>" for every measurement and, at the
// end, "median <who> <what> <median> <min> <max> <count>"; bench/run turns
// those into bench/results.md. At the end of each run, Narv's figures are
// also divided by each peer's of the same run: "sample narv <what>/<peer>
// <ratio>", so that the ratios compare programs measured side by side, not
// medians taken from different runs. Progress goes to standard error.
//
// Narv is two processes: the counting one, and `narv --views`, which it starts
// for its windows (and 10 s before a break) and ends when they have closed.
// Every figure of Narv's is of both, the window process whenever it runs;
// its windows are found by the process that made them or its parent.
//
//   bench_session --narv PATH --monitors left,right [--runs N] [--startups N]
//                 [--later N] [--peers workrave,safeeyes] [--floor PATH] [--quick]
//                 [--phases SETTLE,MOTION,COUNTING,PAUSED] [--work-minutes N]

#include "statusbar/DBusPlain.h"
#include "statusbar/FakeStatusNotifierWatcher.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {

QElapsedTimer g_clock;

// Milliseconds on one monotonic clock for everything this program sees.
double nowMs()
{
    return double(g_clock.nsecsElapsed()) / 1e6;
}

void progress(const QString &text)
{
    std::fprintf(stderr, "bench: %s\n", qPrintable(text));
    std::fflush(stderr);
}

// Runs the event loop until the predicate holds or the time is up; what the
// predicate waits for is time-stamped where it arrives, not here.
bool waitFor(const std::function<bool()> &done, double timeoutMs)
{
    const double deadline = nowMs() + timeoutMs;
    while (!done()) {
        const double left = deadline - nowMs();
        if (left <= 0)
            return false;
        QEventLoop loop;
        QTimer::singleShot(int(std::min(left, 50.0)) + 1, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

void sleepMs(double ms)
{
    waitFor([] { return false; }, ms);
}

// --- /proc

QByteArray readProc(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A "Name:   value kB" field of /proc/<pid>/status or smaps_rollup.
qint64 procField(const QByteArray &text, const QByteArray &name)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

struct Memory {
    qint64 rssKiB = -1;
    qint64 pssKiB = -1;
};

// The fields of /proc/<pid>/stat after the command name (field 2), which may
// hold spaces: the state is at 0, the parent at 1, utime at 11.
QList<QByteArray> statFields(qint64 pid)
{
    const QByteArray stat = readProc(QStringLiteral("/proc/%1/stat").arg(pid));
    const qsizetype close = stat.lastIndexOf(')');
    return close < 0 ? QList<QByteArray>() : stat.mid(close + 2).split(' ');
}

// The process, its parent, its parent's parent... up to init: who started
// whom, read while the process is alive (it is no longer known once it ends).
QList<qint64> lineageOf(qint64 pid)
{
    QList<qint64> lineage;
    while (pid > 1 && !lineage.contains(pid)) {
        lineage.append(pid);
        pid = statFields(pid).value(1).toLongLong();
    }
    return lineage;
}

// The process and every process it started that is alive now (the window
// process Narv starts, and whatever that starts), the process first. This
// kernel has no /proc/<pid>/task/*/children, so every process's parent is read.
QList<qint64> familyOf(qint64 pid)
{
    QMultiHash<qint64, qint64> children; // by parent
    const QStringList all = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &entry : all) {
        bool number = false;
        const qint64 child = entry.toLongLong(&number);
        if (number)
            children.insert(statFields(child).value(1).toLongLong(), child);
    }
    QList<qint64> family{pid};
    for (qsizetype i = 0; i < family.size(); ++i)
        family.append(children.values(family.at(i)));
    return family;
}

// Summed over the processes: each keeps its own pages resident, so the RSS
// of the two counts the libraries both have mapped twice, as the system pays
// for them twice when nothing else shares them; PSS divides shared pages
// among their users and adds up without that. A process that ended between
// listing and reading adds nothing; without the first, no reading at all.
Memory memoryOf(const QList<qint64> &pids)
{
    Memory sum;
    for (qint64 pid : pids) {
        const qint64 rss = procField(readProc(QStringLiteral("/proc/%1/status").arg(pid)), "VmRSS");
        const qint64 pss =
            procField(readProc(QStringLiteral("/proc/%1/smaps_rollup").arg(pid)), "Pss");
        if (rss < 0 || pss < 0) {
            if (pid == pids.value(0))
                return {};
            continue;
        }
        sum.rssKiB = std::max<qint64>(sum.rssKiB, 0) + rss;
        sum.pssKiB = std::max<qint64>(sum.pssKiB, 0) + pss;
    }
    return sum;
}

// Which of these pieces (parts of a mapped file's path) the process has
// mapped, in the order asked.
QStringList mappedOf(qint64 pid, const QStringList &pieces)
{
    const QByteArray maps = readProc(QStringLiteral("/proc/%1/maps").arg(pid));
    QStringList found;
    for (const QString &piece : pieces) {
        if (maps.contains(piece.toUtf8()))
            found.append(piece);
    }
    return found;
}

// What the counting process keeps out until it needs it: Qt Quick and QML
// come with the window process, QtNetwork and TLS with the update check's
// process of a moment, QtWidgets only where no StatusNotifierWatcher was
// there at start (the bench plays one), fontconfig's font list with text.
const QStringList notWhileCounting{
    QStringLiteral("libQt6Gui"),           QStringLiteral("libQt6Quick"),
    QStringLiteral("libQt6Qml"),           QStringLiteral("libQt6Widgets"),
    QStringLiteral("libQt6Network"),       QStringLiteral("libssl"),
    QStringLiteral("libcrypto"),           QStringLiteral("narv_views.so"),
    QStringLiteral("narv_update.so"),      QStringLiteral("narv_updatewindow.so"),
    QStringLiteral("narv_classictray.so"), QStringLiteral("/var/cache/fontconfig"),
};
// What the window process draws a break with.
const QStringList inTheWindowProcess{QStringLiteral("libQt6Quick"), QStringLiteral("libQt6Qml"),
                                     QStringLiteral("narv_views.so")};

// What a process has used so far, thread by thread: time on the CPU from the
// scheduler's nanosecond counters (schedstat), voluntary context switches
// (wake-ups). The tick counters of /proc/<pid>/stat, in 10 ms steps, would
// be too coarse for a program that uses a few milliseconds a minute; they
// are used for the children the process waited for (a helper it runs).
struct ThreadUsage {
    QString name;
    double cpuNs = 0;
    qint64 voluntarySwitches = 0;
};

struct ProcessUsage {
    qint64 parent = 0;
    double childrenNs = 0; // cutime + cstime: the children it waited for
    double totalNs = 0;    // utime + stime + cutime + cstime: what its parent gets when it ends
};

struct Usage {
    QHash<qint64, ThreadUsage> threads;    // by thread id
    QHash<qint64, ProcessUsage> processes; // by pid
};

// The threads of every process listed, the first one's under their own
// names, the others' as "child:name".
Usage usageOf(const QList<qint64> &pids)
{
    Usage usage;
    static const double tickNs = 1e9 / double(sysconf(_SC_CLK_TCK));
    for (qint64 pid : pids) {
        const QList<QByteArray> fields = statFields(pid);
        if (fields.size() <= 15)
            continue; // ended meanwhile
        const auto ticks = [&](int i) { return fields.at(i).toDouble() * tickNs; };
        usage.processes.insert(pid, {fields.at(1).toLongLong(), ticks(13) + ticks(14),
                                     ticks(11) + ticks(12) + ticks(13) + ticks(14)});
        const QString prefix = pid == pids.first() ? QString() : QStringLiteral("child:");
        const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
        for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QByteArray schedstat =
                readProc(tasks.filePath(task) + QStringLiteral("/schedstat"));
            if (schedstat.isEmpty())
                continue; // ended meanwhile: read as gone, not as zero
            ThreadUsage t;
            t.name =
                prefix + QString::fromUtf8(
                             readProc(tasks.filePath(task) + QStringLiteral("/comm")).trimmed())
                             .replace(u' ', u'_');
            t.cpuNs = schedstat.split(' ').value(0).toDouble();
            t.voluntarySwitches =
                procField(readProc(tasks.filePath(task) + QStringLiteral("/status")),
                          "voluntary_ctxt_switches");
            usage.threads.insert(task.toLongLong(), t);
        }
    }
    return usage;
}

struct Activity {
    double cpuPercent = 0; // of one core
    double wakeupsPerSecond = 0;
    QString perThread; // "name=wake-ups name=wake-ups", the busiest first
};

// Adds up what a program used over a stretch of time from readings taken
// every second, of its process and of those it started (Narv's window
// process): what a thread used between two readings counts when it is in
// both (or only in the later one, when it started in between: a window
// process started during the stretch counts from its start).
//
// A process that ends between two readings: its threads count up to the last
// reading that saw them. The rest of its time, up to its end, arrives with
// its parent's counters of waited-for children, which grow by all the process
// ever used (through each parent up to one still running, when a process and
// its parent end together); what it had used by that last reading is taken
// off again, as it is counted already (or was used before the stretch). So its time counts in
// full, the end of it in ticks; its wake-ups count as read while it was
// alive (nothing in /proc keeps the context switches of ended children), at
// most its last second's are lost. A helper that comes and goes between two
// readings counts through its parent's counters alone, in ticks.
class ActivityMeter {
public:
    void add(const Usage &now)
    {
        if (m_readings++ > 0) {
            for (auto it = now.threads.cbegin(); it != now.threads.cend(); ++it) {
                const ThreadUsage before = m_last.threads.value(it.key());
                m_cpuNs += it->cpuNs - before.cpuNs;
                const qint64 switches = it->voluntarySwitches - before.voluntarySwitches;
                m_switches += switches;
                m_byThread[it->name] += switches;
            }
            for (auto it = now.processes.cbegin(); it != now.processes.cend(); ++it)
                m_cpuNs += it->childrenNs - m_last.processes.value(it.key()).childrenNs;
            for (auto it = m_last.processes.cbegin(); it != m_last.processes.cend(); ++it) {
                if (now.processes.contains(it.key()))
                    continue;
                // Gone: its time goes up to its parent, and from there, when that
                // has gone too, to the next one still here.
                qint64 up = it->parent;
                while (m_last.processes.contains(up) && !now.processes.contains(up))
                    up = m_last.processes.value(up).parent;
                if (now.processes.contains(up))
                    m_cpuNs -= it->totalNs;
            }
        }
        m_last = now;
    }

    Activity result(double wallMs) const
    {
        QList<std::pair<qint64, QString>> threads;
        for (auto it = m_byThread.cbegin(); it != m_byThread.cend(); ++it) {
            if (it.value() > 0)
                threads.append({it.value(), it.key()});
        }
        std::sort(threads.begin(), threads.end(), std::greater<>());
        QStringList named;
        for (const auto &[n, name] : threads)
            named.append(QStringLiteral("%1=%2").arg(name).arg(n));
        return {100.0 * m_cpuNs / (wallMs * 1e6), m_switches * 1000.0 / wallMs, named.join(u' ')};
    }

private:
    Usage m_last;
    int m_readings = 0;
    double m_cpuNs = 0;
    qint64 m_switches = 0;
    QMap<QString, qint64> m_byThread;
};

// --- X: which windows get mapped, by whom, when

class XWatch : public QObject {
public:
    struct Window {
        qint64 pid = 0;
        QList<qint64> lineage; // the pid, its parent, ...: read when the window is first mapped
        QString title;
        bool mapped = false;
        double mappedAt = 0; // ms
        double unmappedAt = 0;
    };

    bool open()
    {
        int screenNumber = 0;
        m_connection = xcb_connect(nullptr, &screenNumber);
        if (xcb_connection_has_error(m_connection))
            return false;
        xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < screenNumber; ++i)
            xcb_screen_next(&it);
        m_root = it.data->root;
        m_pidAtom = atom("_NET_WM_PID");
        m_nameAtom = atom("_NET_WM_NAME");
        m_utf8Atom = atom("UTF8_STRING");
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_connection);
        m_notifier =
            new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
        connect(m_notifier, &QSocketNotifier::activated, this, [this] { read(false); });
        return true;
    }

    ~XWatch() override
    {
        if (m_connection)
            xcb_disconnect(m_connection);
    }

    const QHash<xcb_window_t, Window> &windows() const { return m_windows; }
    const QList<std::pair<xcb_window_t, Window>> &destroyed() const { return m_destroyed; }

    // Windows of this process or of one it started (Narv draws its windows in
    // a process of its own), destroyed ones too, whose title is (or is not)
    // one of these, on its own or followed by the application's name as Qt
    // adds it ("left — Narv"). A window process that has ended took its
    // windows with it, but when they were mapped still counts.
    QList<Window> windowsOf(qint64 pid, const QStringList &titles, bool titled) const
    {
        QList<Window> found;
        const auto match = [&](const Window &w) {
            const QString bare = w.title.section(QStringLiteral(" \u2014 "), 0, 0);
            if (w.lineage.contains(pid) && titles.contains(bare) == titled)
                found.append(w);
        };
        for (const Window &w : m_windows)
            match(w);
        for (const auto &[id, w] : m_destroyed)
            match(w);
        return found;
    }

private:
    xcb_atom_t atom(const char *name)
    {
        auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(strlen(name)), name);
        xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(m_connection, cookie, nullptr);
        const xcb_atom_t a = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        free(reply);
        return a;
    }

    QByteArray property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
    {
        auto cookie = xcb_get_property(m_connection, 0, window, name, type, 0, 1024);
        xcb_get_property_reply_t *reply = xcb_get_property_reply(m_connection, cookie, nullptr);
        QByteArray value;
        if (reply && xcb_get_property_value_length(reply) > 0)
            value = QByteArray(static_cast<const char *>(xcb_get_property_value(reply)),
                               xcb_get_property_value_length(reply));
        free(reply);
        return value;
    }

    // Reads what the socket holds, or only what xcb has queued already (after
    // a reply, which may have brought events along).
    void read(bool queuedOnly)
    {
        while (xcb_generic_event_t *event = queuedOnly ? xcb_poll_for_queued_event(m_connection)
                                                       : xcb_poll_for_event(m_connection)) {
            const double at = nowMs();
            handle(event, at);
            free(event);
            queuedOnly = true;
        }
    }

    void handle(xcb_generic_event_t *event, double at)
    {
        switch (event->response_type & 0x7f) {
        case XCB_MAP_NOTIFY: {
            const auto *map = reinterpret_cast<xcb_map_notify_event_t *>(event);
            Window &w = m_windows[map->window];
            w.mapped = true;
            w.mappedAt = at;
            if (w.pid == 0) {
                // Asked once: the pid and title of our subjects' windows do not change.
                const QByteArray pid = property(map->window, m_pidAtom, XCB_ATOM_CARDINAL);
                if (pid.size() >= 4) {
                    w.pid = *reinterpret_cast<const quint32 *>(pid.constData());
                    w.lineage = lineageOf(w.pid);
                }
                QByteArray name = property(map->window, m_nameAtom, m_utf8Atom);
                if (name.isEmpty())
                    name = property(map->window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING);
                w.title = QString::fromUtf8(name);
            }
            break;
        }
        case XCB_UNMAP_NOTIFY: {
            const auto *unmap = reinterpret_cast<xcb_unmap_notify_event_t *>(event);
            if (auto it = m_windows.find(unmap->window); it != m_windows.end()) {
                it->mapped = false;
                it->unmappedAt = at;
            }
            break;
        }
        case XCB_DESTROY_NOTIFY: {
            // The X server hands the id out again, to the next program too.
            const auto *destroy = reinterpret_cast<xcb_destroy_notify_event_t *>(event);
            if (auto it = m_windows.find(destroy->window); it != m_windows.end()) {
                if (it->mapped) {
                    it->mapped = false;
                    it->unmappedAt = at;
                }
                m_destroyed.append({it.key(), *it});
                m_windows.erase(it);
            }
            break;
        }
        default:
            break;
        }
    }

    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = 0;
    xcb_atom_t m_pidAtom = XCB_ATOM_NONE;
    xcb_atom_t m_nameAtom = XCB_ATOM_NONE;
    xcb_atom_t m_utf8Atom = XCB_ATOM_NONE;
    QSocketNotifier *m_notifier = nullptr;
    QHash<xcb_window_t, Window> m_windows;
    QList<std::pair<xcb_window_t, Window>> m_destroyed; // in the order they went
};

// --- the programs measured

struct Program {
    QString id;      // "narv", "workrave", "safeeyes": the key in the output
    QString command; // what is started
    QStringList arguments;
    // Measured with the processes it starts: Narv's windows are a process of
    // their own, part of what it costs. The peers' helpers (the accessibility
    // bus, dconf) serve every program of a session and are left out.
    bool withChildren = false;
};

// One program in a scratch home of its own. Standard output is read line by
// line and time-stamped as it arrives (Narv writes its log there, flushed per
// line); everything else goes to files in the home for a look afterwards.
class Subject : public QObject {
public:
    Subject(const Program &program, const QProcessEnvironment &base) : m_program(program)
    {
        QDir home(m_home.path());
        for (const char *dir : {".config", ".cache", ".local/share", ".local/state"})
            home.mkpath(QString::fromLatin1(dir));
        QProcessEnvironment env = base;
        env.insert(QStringLiteral("HOME"), m_home.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral(".config")));
        env.insert(QStringLiteral("XDG_CACHE_HOME"), home.filePath(QStringLiteral(".cache")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral(".local/share")));
        env.insert(QStringLiteral("XDG_STATE_HOME"), home.filePath(QStringLiteral(".local/state")));
        m_process.setProcessEnvironment(env);
        m_process.setWorkingDirectory(m_home.path());
        m_process.setStandardErrorFile(home.filePath(QStringLiteral("stderr.txt")));
        connect(&m_process, &QProcess::readyReadStandardOutput, this, [this] { readLines(); });
    }

    ~Subject() override { stop(); }

    const QString &id() const { return m_program.id; }
    QString home() const { return m_home.path(); }
    qint64 pid() const { return m_process.processId(); }
    // What is measured: the process, and those it started when they count.
    QList<qint64> processes() const
    {
        return m_program.withChildren ? familyOf(pid()) : QList<qint64>{pid()};
    }
    bool running() const { return m_process.state() == QProcess::Running; }
    double startedAt() const { return m_startedAt; }

    void start()
    {
        m_startedAt = nowMs();
        m_process.start(m_program.command, m_program.arguments);
        m_process.waitForStarted(10000);
    }

    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!waitFor([this] { return m_process.state() == QProcess::NotRunning; }, 10000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }

    // When each line containing this text came, from `after` on.
    QList<double> linesAt(const QString &text, double after = 0) const
    {
        QList<double> found;
        for (const auto &[at, line] : m_lines) {
            if (at >= after && line.contains(text))
                found.append(at);
        }
        return found;
    }

    bool hasLine(const QRegularExpression &pattern) const
    {
        for (const auto &line : std::as_const(m_lines)) {
            if (pattern.match(line.second).hasMatch())
                return true;
        }
        return false;
    }

    std::optional<double> lineAt(const QString &text, double after = 0) const
    {
        const QList<double> found = linesAt(text, after);
        return found.isEmpty() ? std::nullopt : std::optional<double>(found.first());
    }

private:
    void readLines()
    {
        const double at = nowMs();
        m_partial += m_process.readAllStandardOutput();
        int end = 0;
        while ((end = m_partial.indexOf('\n')) >= 0) {
            m_lines.append({at, QString::fromUtf8(m_partial.left(end))});
            m_partial.remove(0, end + 1);
        }
    }

    Program m_program;
    QTemporaryDir m_home;
    QProcess m_process;
    double m_startedAt = 0;
    QByteArray m_partial;
    QList<std::pair<double, QString>> m_lines;
};

// --- D-Bus: the watcher we play, and clicks on Narv's menu

// Clicks the item of Narv's menu that carries this tag (2 start/stop, 3 water),
// the way a panel does: com.canonical.dbusmenu Event(id, "clicked", ...).
bool clickMenuItem(qint64 pid, int tag)
{
    const QString service = QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(pid);
    const QString interface = QStringLiteral("com.canonical.dbusmenu");
    QList<int> ids;
    for (int id = 1; id <= 40; ++id)
        ids.append(id);
    QDBusMessage ask = QDBusMessage::createMethodCall(
        service, QStringLiteral("/MenuBar"), interface, QStringLiteral("GetGroupProperties"));
    ask << QVariant::fromValue(ids) << QStringList{QStringLiteral("x-narv-tag")};
    const QDBusMessage reply = QDBusConnection::sessionBus().call(ask, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage)
        return false;
    for (const QVariant &entry : plain(reply.arguments().value(0)).toList()) {
        const QVariantList fields = entry.toList();
        if (fields.value(1).toMap().value(QStringLiteral("x-narv-tag")).toInt() != tag)
            continue;
        QDBusMessage click = QDBusMessage::createMethodCall(service, QStringLiteral("/MenuBar"),
                                                            interface, QStringLiteral("Event"));
        click << fields.value(0).toInt() << QStringLiteral("clicked")
              << QVariant::fromValue(QDBusVariant(0)) << 0u;
        QDBusConnection::sessionBus().asyncCall(click);
        return true;
    }
    return false;
}

// --- the session

struct Options {
    QString narv;
    QStringList monitors;
    QList<Program> peers;
    int runs = 3;
    int startups = 5;
    int later = 5;
    double settleMs = 15000; // before the first memory reading
    double motionMs = 30000;
    double countingMs = 60000;
    double pausedMs = 30000;
    double followingMs = 30000; // counting with a `narv status --follow` client
    double peerHeadStartMs = 3000;
    double windowProcessEndMs = 15000; // the longest wait for it after the water panel
    int workMinutes = 1;               // the first work period, whose accuracy is measured
};

class Session {
public:
    explicit Session(Options options) : m_options(std::move(options))
    {
        m_env = QProcessEnvironment::systemEnvironment();
        m_env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        m_env.remove(QStringLiteral("XDG_SESSION_TYPE"));
        m_env.remove(QStringLiteral("WAYLAND_DISPLAY"));
        m_env.insert(QStringLiteral("http_proxy"), QStringLiteral("http://127.0.0.1:9"));
        m_env.insert(QStringLiteral("https_proxy"), QStringLiteral("http://127.0.0.1:9"));
    }

    bool setUp()
    {
        if (!m_x.open()) {
            progress(QStringLiteral("cannot open the X display"));
            return false;
        }
        QDBusConnection bus = QDBusConnection::sessionBus();
        m_watcher = std::make_unique<FakeStatusNotifierWatcher>(bus);
        if (!m_watcher->start()) {
            progress(QStringLiteral("cannot play the StatusNotifierWatcher on the session bus"));
            return false;
        }
        QObject::connect(m_watcher.get(), &FakeStatusNotifierWatcher::StatusNotifierItemRegistered,
                         m_watcher.get(), [this](const QString &) {
                             const double at = nowMs();
                             const QString sender = m_watcher->lastSender();
                             const auto pid =
                                 QDBusConnection::sessionBus().interface()->servicePid(sender);
                             if (pid.isValid())
                                 m_registeredAt.insert(pid.value(), at);
                         });
        return true;
    }

    void run()
    {
        warmUp();
        startups();
        countingWithOptions();
        for (int run = 1; run <= m_options.runs; ++run) {
            progress(QStringLiteral("run %1 of %2").arg(run).arg(m_options.runs));
            m_thisRun.clear();
            info(QStringLiteral("run"),
                 QString::number(run)); // the samples after it are this run's
            oneRun();
            sampleRatios();
        }
        printMedians();
    }

private:
    // Four decimals: CPU figures are hundredths of a per cent, and a verdict
    // must not hang on how the last printed digit was rounded.
    void sample(const QString &who, const QString &what, double value)
    {
        m_samples[who][what].append(value);
        m_thisRun[who][what] = value;
        std::printf("sample %s %s %.4f\n", qPrintable(who), qPrintable(what), value);
        std::fflush(stdout);
    }

    // Narv's figures of this run over each peer's of the same figure and run.
    void sampleRatios()
    {
        const QMap<QString, double> narv = m_thisRun.value(QStringLiteral("narv"));
        for (const Program &peer : m_options.peers) {
            const QMap<QString, double> theirs = m_thisRun.value(peer.id);
            for (auto it = narv.cbegin(); it != narv.cend(); ++it) {
                if (theirs.value(it.key()) > 0)
                    sample(QStringLiteral("narv"), it.key() + u'/' + peer.id,
                           it.value() / theirs.value(it.key()));
            }
        }
    }

    void info(const QString &key, const QString &text)
    {
        std::printf("info %s %s\n", qPrintable(key), qPrintable(text));
        std::fflush(stdout);
    }

    Program narvProgram() const { return {QStringLiteral("narv"), m_options.narv, {}, true}; }

    // The settings a run starts with: a short first work period, one-second
    // breaks (no long ones), the water reminder on so its menu item is there,
    // and the last update check twelve hours ago but a few seconds, so that
    // the first automatic check runs before the memory is read (the bench has
    // no network, and a proxy that is not there makes it fail at once).
    void writeNarvSettings(const Subject &narv, int workMinutes)
    {
        QDir(narv.home()).mkpath(QStringLiteral(".config/narv"));
        QSettings settings(narv.home() + QStringLiteral("/.config/narv/narv.conf"),
                           QSettings::IniFormat);
        settings.setValue(QStringLiteral("pref.work.time"), workMinutes);
        settings.setValue(QStringLiteral("pref.break.time"), 1);
        settings.setValue(QStringLiteral("pref.short.break.times"), 1000);
        settings.setValue(QStringLiteral("auto_check_update"), true);
        const double lastCheck = QDateTime::currentMSecsSinceEpoch() / 1000.0 - 43200 + 5;
        settings.setValue(QStringLiteral("last_update_check"), QString::number(lastCheck, 'f', 3));
        settings.setValue(QStringLiteral("pref.water.enable"), true);
    }

    // Narv alone, with every option of the gentler interruptions on and
    // nothing due (a period of 25 minutes): counting's wake-ups, no more.
    void countingWithOptions()
    {
        progress(QStringLiteral("counting with the interruption options on, %1 s")
                     .arg(m_options.pausedMs / 1000));
        Subject narv(narvProgram(), m_env);
        writeNarvSettings(narv, 25);
        QSettings settings(narv.home() + QStringLiteral("/.config/narv/narv.conf"),
                           QSettings::IniFormat);
        settings.setValue(QStringLiteral("pref.heads.up.seconds"), 60);
        settings.setValue(QStringLiteral("pref.postpone.minutes"), 5);
        settings.setValue(QStringLiteral("pref.postpone.limit"), 3);
        settings.setValue(QStringLiteral("pref.pause.for.enable"), true);
        settings.setValue(QStringLiteral("pref.defer.when.busy"), true);
        settings.setValue(QStringLiteral("pref.break.sounds"), true);
        settings.sync();
        narv.start();
        registration(narv, 10000);
        sleepMs(narv.startedAt() + m_options.settleMs - nowMs()); // past the update check
        measureActivity({&narv}, QStringLiteral("options_counting"), m_options.pausedMs);
        narv.stop();
    }

    // Another program editing the settings file, as a user may: Narv picks it
    // up and uses the new length from its next work period on.
    void setWorkMinutes(const Subject &narv, int minutes)
    {
        QSettings settings(narv.home() + QStringLiteral("/.config/narv/narv.conf"),
                           QSettings::IniFormat);
        settings.setValue(QStringLiteral("pref.work.time"), minutes);
        settings.sync();
    }

    std::optional<double> registration(const Subject &subject, double timeoutMs)
    {
        waitFor([&] { return m_registeredAt.contains(subject.pid()) || !subject.running(); },
                timeoutMs);
        if (!m_registeredAt.contains(subject.pid()))
            return std::nullopt;
        return m_registeredAt.value(subject.pid()) - subject.startedAt();
    }

    // Each peer started once and stopped, unmeasured. The first GTK program on
    // a fresh X server asks OpenGL which visuals it has (Mesa and LLVM, some
    // 50 MiB that stay resident) and leaves the answer on the root window for
    // the programs after it; on a desktop the panel has long done that.
    void warmUp()
    {
        for (const Program &program : m_options.peers) {
            Subject peer(program, m_env);
            peer.start();
            sleepMs(m_options.peerHeadStartMs);
            peer.stop();
        }
    }

    // Narv started and stopped a few times, alone: start to status item registered.
    void startups()
    {
        progress(
            QStringLiteral("start to status item registered, %1 starts").arg(m_options.startups));
        for (int i = 0; i < m_options.startups; ++i) {
            Subject narv(narvProgram(), m_env);
            writeNarvSettings(narv, 25);
            narv.start();
            if (const auto ms = registration(narv, 10000))
                sample(QStringLiteral("narv"), QStringLiteral("startup_ms"), *ms);
            else
                progress(QStringLiteral("narv did not register its status item"));
            // The log is open and the first period counting: a quiet stop.
            waitFor([&] { return narv.lineAt(QStringLiteral("sandbox home path")).has_value(); },
                    5000);
            narv.stop();
            sleepMs(300);
        }
    }

    // How long after the end of a countdown (its log line's arrival) every
    // monitor had its break window mapped. The line and the X events come
    // through different sockets, so a window can be seen a fraction of a
    // millisecond before the line that announced it: anything mapped from
    // shortly before the end on counts, and the time is at least zero.
    std::optional<double> breakWindowsShown(const Subject &narv, double end, double timeoutMs)
    {
        std::optional<double> last;
        waitFor(
            [&] {
                int shown = 0;
                double latest = end;
                for (const auto &w : m_x.windowsOf(narv.pid(), m_options.monitors, true)) {
                    if (w.mappedAt >= end - 100) {
                        ++shown;
                        latest = std::max(latest, w.mappedAt);
                    }
                }
                if (shown < m_options.monitors.size())
                    return false;
                last = latest - end;
                return true;
            },
            timeoutMs);
        if (!last)
            dumpWindows(narv, end);
        return last;
    }

    void dumpWindows(const Subject &narv, double end) const
    {
        progress(QStringLiteral("windows seen (ms from the countdown's end):"));
        const auto show = [&](xcb_window_t id, const XWatch::Window &w, const QString &state) {
            progress(QStringLiteral("  0x%1 pid %2 \"%3\" %4, mapped at %5")
                         .arg(id, 0, 16)
                         .arg(w.pid)
                         .arg(w.title, state)
                         .arg(w.mappedAt - end));
        };
        for (auto it = m_x.windows().cbegin(); it != m_x.windows().cend(); ++it)
            show(it.key(), *it, it->mapped ? QStringLiteral("mapped") : QStringLiteral("unmapped"));
        for (const auto &[id, w] : m_x.destroyed())
            show(id, w, QStringLiteral("destroyed"));
        QStringList pids;
        for (qint64 pid : narv.processes())
            pids.append(QString::number(pid));
        progress(QStringLiteral("narv's processes: %1").arg(pids.join(u' ')));
    }

    // Whether the window process that drew a break was there before the
    // countdown's end (started ahead, its windows made) or was started for it
    // (the break waited for it to start and load the windows): when Narv
    // logged its start, in ms from the end, from the last start before the
    // windows were all mapped.
    // The libraries kept out of the counting process, and (during a break)
    // those the window process needs: "sample narv <when>_misplaced_libraries
    // N", the pieces in "info narv.<when>_libraries".
    void libraries(const Subject &narv, const QString &when)
    {
        QStringList misplaced;
        for (const QString &piece : mappedOf(narv.pid(), notWhileCounting))
            misplaced.append(piece + QStringLiteral("@counting"));
        if (when == u"break") {
            QStringList there;
            for (qint64 child : familyOf(narv.pid())) {
                if (readProc(QStringLiteral("/proc/%1/cmdline").arg(child)).contains("--views"))
                    there = mappedOf(child, inTheWindowProcess);
            }
            for (const QString &piece : inTheWindowProcess) {
                if (!there.contains(piece))
                    misplaced.append(piece + QStringLiteral("@missing-from-windows"));
            }
        }
        sample(QStringLiteral("narv"), when + QStringLiteral("_misplaced_libraries"),
               misplaced.size());
        info(QStringLiteral("narv.") + when + QStringLiteral("_libraries"),
             misplaced.isEmpty() ? QStringLiteral("as-expected") : misplaced.join(u','));
    }

    void noteWindowProcess(const Subject &narv, const QString &which, double end, double shown)
    {
        const QString startLine = QStringLiteral(" : window process ");
        std::optional<double> startedAt;
        for (double at : narv.linesAt(startLine)) {
            if (at <= end + shown)
                startedAt = at;
        }
        if (!startedAt) {
            progress(which + QStringLiteral(": no window process start in narv's log"));
            return;
        }
        // Lines that came in one read carry one time: "+0.0", at the end.
        const double lead = std::abs(*startedAt - end) < 0.05 ? 0.0 : *startedAt - end;
        const QString signedLead =
            (lead >= 0 ? QStringLiteral("+") : QString()) + QString::number(lead, 'f', 1);
        info(QStringLiteral("narv.") + which + QStringLiteral("_window_process_started_ms"),
             signedLead);
        progress(QStringLiteral("%1: windows mapped %2 ms after the countdown's end; the window "
                                "process was started at %3 ms")
                     .arg(which, QString::number(shown, 'f', 1), signedLead));
    }

    bool breakWindowsGone(const Subject &narv, double timeoutMs)
    {
        return waitFor(
            [&] {
                for (const auto &w : m_x.windowsOf(narv.pid(), m_options.monitors, true)) {
                    if (w.mapped)
                        return false;
                }
                return true;
            },
            timeoutMs);
    }

    // Moves the pointer without pause (a few hundred moves a second, there and
    // back) for the given time, one xdotool process after another.
    void moveMouse(double ms)
    {
        QStringList chain;
        for (int i = 0; i < 100; ++i) {
            chain << QStringLiteral("mousemove_relative") << QStringLiteral("1")
                  << QStringLiteral("0") << QStringLiteral("sleep") << QStringLiteral("0.001")
                  << QStringLiteral("mousemove_relative") << QStringLiteral("--")
                  << QStringLiteral("-1") << QStringLiteral("0") << QStringLiteral("sleep")
                  << QStringLiteral("0.001");
        }
        const double end = nowMs() + ms;
        qint64 moves = 0;
        QProcess xdotool;
        while (nowMs() < end) {
            xdotool.start(QStringLiteral("xdotool"), chain);
            waitFor([&] { return xdotool.state() == QProcess::NotRunning; }, 30000);
            moves += 200;
        }
        info(QStringLiteral("motion.moves_per_second"),
             QString::number(qRound(double(moves) * 1000 / ms)));
    }

    void measureActivity(const QList<Subject *> &subjects, const QString &what, double ms,
                         const std::function<void()> &during = {})
    {
        QHash<Subject *, ActivityMeter> meters;
        const auto read = [&] {
            for (Subject *s : subjects) {
                if (s->running())
                    meters[s].add(usageOf(s->processes()));
            }
        };
        read();
        const double start = nowMs();
        // Readings every second, also while `during` runs the event loop.
        QTimer every;
        every.setInterval(1000);
        QObject::connect(&every, &QTimer::timeout, read);
        every.start();
        if (during)
            during();
        sleepMs(start + ms - nowMs());
        every.stop();
        read();
        const double wall = nowMs() - start;
        for (Subject *s : subjects) {
            if (!s->running()) {
                progress(s->id() + QStringLiteral(" is no longer running"));
                continue;
            }
            const Activity a = meters[s].result(wall);
            sample(s->id(), what + QStringLiteral("_cpu_percent"), a.cpuPercent);
            sample(s->id(), what + QStringLiteral("_wakeups_per_s"), a.wakeupsPerSecond);
            info(s->id() + u'.' + what + QStringLiteral("_threads"), a.perThread);
        }
    }

    void oneRun()
    {
        std::vector<std::unique_ptr<Subject>> peers;
        for (const Program &program : m_options.peers) {
            peers.push_back(std::make_unique<Subject>(program, m_env));
            peers.back()->start();
        }
        sleepMs(peers.empty() ? 0 : m_options.peerHeadStartMs);

        auto narvOwned = std::make_unique<Subject>(narvProgram(), m_env);
        Subject &narv = *narvOwned;
        writeNarvSettings(narv, m_options.workMinutes);
        narv.start();
        QList<Subject *> everyone{&narv};
        for (auto &p : peers)
            everyone.append(p.get());

        if (const auto ms = registration(narv, 10000))
            sample(QStringLiteral("narv"), QStringLiteral("startup_ms"), *ms);
        // The period after the first break is longer, to measure the counting
        // in; the one running now keeps its length.
        setWorkMinutes(narv, 3);
        for (auto &p : peers) {
            if (m_registeredAt.contains(p->pid()))
                sample(p->id(), QStringLiteral("startup_ms"),
                       m_registeredAt.value(p->pid()) - p->startedAt());
        }

        // Resident memory while counting, before any window and after the
        // first automatic update check.
        sleepMs(narv.startedAt() + m_options.settleMs - nowMs());
        const QRegularExpression checked(
            QStringLiteral(" : (update check failed|no update|update available)"));
        waitFor([&] { return narv.hasLine(checked); }, 45000);
        info(QStringLiteral("narv.update_check"),
             narv.hasLine(checked) ? QStringLiteral("done") : QStringLiteral("not-done"));
        libraries(narv, QStringLiteral("counting"));
        for (Subject *s : everyone) {
            const Memory m = memoryOf(s->processes());
            sample(s->id(), QStringLiteral("rss_counting_kib"), double(m.rssKiB));
            sample(s->id(), QStringLiteral("pss_counting_kib"), double(m.pssKiB));
        }

        progress(QStringLiteral("mouse motion, %1 s").arg(m_options.motionMs / 1000));
        measureActivity(everyone, QStringLiteral("motion"), m_options.motionMs,
                        [&] { moveMouse(m_options.motionMs); });

        // The first period ends: how long it took, and how long until every
        // monitor has its break window.
        const auto started = narv.lineAt(
            QStringLiteral(" : ticktack timer start %1").arg(m_options.workMinutes * 60));
        progress(QStringLiteral("waiting for the first break"));
        const QString timesUp =
            QStringLiteral(" : ticktack timer timesup for %1").arg(m_options.workMinutes * 60);
        waitFor([&] { return narv.lineAt(timesUp).has_value(); },
                m_options.workMinutes * 60000.0 + 10000);
        const auto ended = narv.lineAt(timesUp);
        if (started && ended) {
            sample(QStringLiteral("narv"), QStringLiteral("period_error_ms"),
                   *ended - *started - m_options.workMinutes * 60000.0);
            if (const auto shown = breakWindowsShown(narv, *ended, 10000)) {
                sample(QStringLiteral("narv"), QStringLiteral("first_break_ms"), *shown);
                noteWindowProcess(narv, QStringLiteral("first_break"), *ended, *shown);
            } else {
                progress(QStringLiteral("the first break's windows did not all appear"));
            }
        } else {
            progress(QStringLiteral("no first work period in narv's log"));
        }
        breakWindowsGone(narv, 10000);

        // The water panel, from the menu, and closed again the same way.
        const double beforeWater = nowMs();
        QString water = QStringLiteral("not-shown");
        if (clickMenuItem(narv.pid(), 3)) {
            const auto panel = [&] {
                for (const auto &w : m_x.windowsOf(narv.pid(), m_options.monitors, false)) {
                    if (w.mapped && w.mappedAt >= beforeWater)
                        return true;
                }
                return false;
            };
            if (waitFor(panel, 5000)) {
                water = QStringLiteral("shown");
                sleepMs(1000);
                clickMenuItem(narv.pid(), 3);
                if (!waitFor([&] { return !panel(); }, 5000))
                    water = QStringLiteral("shown-not-closed");
            }
        } else {
            water = QStringLiteral("no-menu-item");
        }
        info(QStringLiteral("narv.water_panel"), water);
        // The window process ends once its windows are closed and no break is
        // near; the memory is read after that, and with it when it stays.
        const double closed = nowMs();
        const bool alone =
            waitFor([&] { return narv.processes().size() == 1; }, m_options.windowProcessEndMs);
        progress(alone ? QStringLiteral("the window process ended %1 ms after the panel closed")
                             .arg(qRound(nowMs() - closed))
                       : QStringLiteral("the window process still runs %1 s after the panel "
                                        "closed: counted in the memory")
                             .arg(m_options.windowProcessEndMs / 1000));
        info(QStringLiteral("narv.window_process_after_windows"),
             alone ? QStringLiteral("no") : QStringLiteral("yes"));
        sleepMs(closed + 2000 - nowMs());
        for (Subject *s : everyone)
            sample(s->id(), QStringLiteral("rss_after_windows_kib"),
                   double(memoryOf(s->processes()).rssKiB));

        progress(QStringLiteral("counting, %1 s").arg(m_options.countingMs / 1000));
        measureActivity(everyone, QStringLiteral("counting"), m_options.countingMs);

        following(narv);

        progress(QStringLiteral("paused, %1 s").arg(m_options.pausedMs / 1000));
        const double pauseClick = nowMs();
        if (clickMenuItem(narv.pid(), 2) &&
            waitFor(
                [&] {
                    return narv.lineAt(QStringLiteral(" : ticktack timer stoped"), pauseClick)
                        .has_value();
                },
                5000)) {
            sleepMs(1000);
            measureActivity({&narv}, QStringLiteral("paused"), m_options.pausedMs);
        } else {
            progress(QStringLiteral("could not pause narv from its menu"));
        }

        // Later breaks. Each is started from the menu (stop, then start, with
        // a work period of none), and once it is on the screen the next period
        // is made long, so that the windows go (after their fade) before the
        // next one is started; with them, as a rule, the window process.
        const QString timesUpNow = QStringLiteral(" : ticktack timer timesup for 0");
        for (int n = 1; n <= m_options.later; ++n) {
            setWorkMinutes(narv, 0);
            const double started = nowMs();
            if (n > 1)
                clickMenuItem(narv.pid(), 2); // stop the long period
            clickMenuItem(narv.pid(), 2);
            if (!waitFor([&] { return narv.lineAt(timesUpNow, started).has_value(); }, 15000)) {
                progress(QStringLiteral("later break %1 did not come").arg(n));
                break;
            }
            setWorkMinutes(narv, 1);
            const double end = *narv.lineAt(timesUpNow, started);
            if (const auto shown = breakWindowsShown(narv, end, 10000)) {
                sample(QStringLiteral("narv"), QStringLiteral("later_break_ms"), *shown);
                noteWindowProcess(narv, QStringLiteral("later_break"), end, *shown);
                if (n == 1) // its windows on the screen, as the first break's were
                    libraries(narv, QStringLiteral("break"));
            } else {
                progress(QStringLiteral("later break %1: not every window appeared").arg(n));
            }
            if (!breakWindowsGone(narv, 15000)) {
                progress(QStringLiteral("the break windows stay after later break %1").arg(n));
                break;
            }
        }
        sample(QStringLiteral("narv"), QStringLiteral("rss_end_kib"),
               double(memoryOf(narv.processes()).rssKiB));
        narv.stop();
        for (auto &p : peers)
            p->stop();
        sleepMs(500);
    }

    // Counting, with a `narv status --follow` client beside Narv as a bar
    // runs one: the client as a process of its own (wake-ups, CPU, memory,
    // the lines it printed), and Narv's own wake-ups meanwhile, which should
    // be those of counting alone: the client counts the seconds itself.
    void following(Subject &narv)
    {
        progress(QStringLiteral("counting beside `narv status --follow`, %1 s")
                     .arg(m_options.followingMs / 1000));
        Subject follower({QStringLiteral("follower"),
                          m_options.narv,
                          {QStringLiteral("status"), QStringLiteral("--follow")}},
                         m_env);
        follower.start();
        if (!waitFor([&] { return follower.lineAt(QString()).has_value(); }, 5000)) {
            progress(QStringLiteral("`narv status --follow` printed nothing"));
            return;
        }
        sleepMs(1000);
        const double start = nowMs();
        measureActivity({&narv, &follower}, QStringLiteral("following"), m_options.followingMs);
        sample(QStringLiteral("follower"), QStringLiteral("lines_per_s"),
               follower.linesAt(QString(), start).size() * 1000.0 / (nowMs() - start));
        sample(QStringLiteral("follower"), QStringLiteral("rss_kib"),
               double(memoryOf({follower.pid()}).rssKiB));
    }

    void printMedians()
    {
        for (auto who = m_samples.cbegin(); who != m_samples.cend(); ++who) {
            for (auto what = who->cbegin(); what != who->cend(); ++what) {
                QList<double> v = what.value();
                std::sort(v.begin(), v.end());
                const double median = v.size() % 2
                                          ? v.at(v.size() / 2)
                                          : (v.at(v.size() / 2 - 1) + v.at(v.size() / 2)) / 2;
                std::printf("median %s %s %.4f %.4f %.4f %lld\n", qPrintable(who.key()),
                            qPrintable(what.key()), median, v.first(), v.last(),
                            static_cast<long long>(v.size()));
            }
        }
        std::fflush(stdout);
    }

    Options m_options;
    QProcessEnvironment m_env;
    XWatch m_x;
    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;
    QHash<qint64, double> m_registeredAt; // pid -> ms
    QMap<QString, QMap<QString, QList<double>>> m_samples;
    QMap<QString, QMap<QString, double>> m_thisRun; // who -> what -> the run's (last) value
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    g_clock.start();

    QCommandLineParser parser;
    parser.addOptions({
        {QStringLiteral("narv"), QStringLiteral("The program."), QStringLiteral("path")},
        {QStringLiteral("monitors"), QStringLiteral("Monitor names, comma-separated."),
         QStringLiteral("names")},
        {QStringLiteral("peers"), QStringLiteral("Peers to run beside it: workrave, safeeyes."),
         QStringLiteral("list")},
        {QStringLiteral("floor"),
         QStringLiteral("bench_floor, run beside them: it and bench_floor_qt beside it, each "
                        "with its label and --silent."),
         QStringLiteral("path")},
        {QStringLiteral("runs"), QStringLiteral("Runs."), QStringLiteral("n")},
        {QStringLiteral("startups"), QStringLiteral("Starts for the start-up time."),
         QStringLiteral("n")},
        {QStringLiteral("later"), QStringLiteral("Later breaks per run."), QStringLiteral("n")},
        {QStringLiteral("phases"),
         QStringLiteral("Seconds before the memory reading, of motion, counting, paused."),
         QStringLiteral("s,m,c,p")},
        {QStringLiteral("work-minutes"), QStringLiteral("The first work period."),
         QStringLiteral("n")},
        {QStringLiteral("quick"), QStringLiteral("Short phases: checks that it all still runs.")},
    });
    parser.process(app);

    Options options;
    options.narv = parser.value(QStringLiteral("narv"));
    options.monitors = parser.value(QStringLiteral("monitors")).split(u',', Qt::SkipEmptyParts);
    if (options.narv.isEmpty() || options.monitors.isEmpty()) {
        std::fprintf(stderr, "usage: bench_session --narv PATH --monitors NAME,NAME [...]\n");
        return 2;
    }
    const QHash<QString, Program> known{
        {QStringLiteral("workrave"), {QStringLiteral("workrave"), QStringLiteral("workrave"), {}}},
        {QStringLiteral("safeeyes"), {QStringLiteral("safeeyes"), QStringLiteral("safeeyes"), {}}},
    };
    for (const QString &peer :
         parser.value(QStringLiteral("peers")).split(u',', Qt::SkipEmptyParts)) {
        if (!known.contains(peer)) {
            std::fprintf(stderr, "bench_session: unknown peer %s\n", qPrintable(peer));
            return 2;
        }
        if (QStandardPaths::findExecutable(known.value(peer).command).isEmpty()) {
            std::fprintf(stderr, "bench_session: %s is not installed\n", qPrintable(peer));
            return 2;
        }
        options.peers.append(known.value(peer));
    }
    // The least a once-a-second label costs, and a wake-up alone, measured
    // like the peers (bench/bench_floor.cpp).
    if (parser.isSet(QStringLiteral("floor"))) {
        const QString floor = parser.value(QStringLiteral("floor"));
        const QString floorQt = floor + QStringLiteral("_qt");
        const QStringList silent{QStringLiteral("--silent")};
        options.peers.append({QStringLiteral("floor"), floor, {}});
        options.peers.append({QStringLiteral("floor_wake"), floor, silent});
        options.peers.append({QStringLiteral("floor_qt"), floorQt, {}});
        options.peers.append({QStringLiteral("floor_qt_wake"), floorQt, silent});
    }
    if (parser.isSet(QStringLiteral("quick"))) {
        options.runs = 1;
        options.startups = 1;
        options.later = 1;
        options.settleMs = 2000;
        options.motionMs = 1000;
        options.countingMs = 2000;
        options.pausedMs = 1000;
        options.followingMs = 2000;
        options.workMinutes = 0;
    }
    if (parser.isSet(QStringLiteral("runs")))
        options.runs = std::max(1, parser.value(QStringLiteral("runs")).toInt());
    if (parser.isSet(QStringLiteral("startups")))
        options.startups = std::max(0, parser.value(QStringLiteral("startups")).toInt());
    if (parser.isSet(QStringLiteral("later")))
        options.later = std::max(0, parser.value(QStringLiteral("later")).toInt());
    if (parser.isSet(QStringLiteral("work-minutes")))
        options.workMinutes = std::max(0, parser.value(QStringLiteral("work-minutes")).toInt());
    if (parser.isSet(QStringLiteral("phases"))) {
        const QStringList phases = parser.value(QStringLiteral("phases")).split(u',');
        double *targets[] = {&options.settleMs, &options.motionMs, &options.countingMs,
                             &options.pausedMs};
        for (int i = 0; i < 4 && i < phases.size(); ++i)
            *targets[i] = phases.at(i).toDouble() * 1000;
    }

    Session session(options);
    if (!session.setUp())
        return 1;
    session.run();
    return 0;
}
