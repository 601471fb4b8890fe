#include "platform/control/ControlCommand.h"

#include "app/AppInfo.h"
#include "app/TicktackController.h"
#include "history/HistoryCommand.h"
#include "platform/control/ControlService.h"
#include "platform/instance/SingleInstance.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {
const char usageText[] =
    "Usage: narv [COMMAND]\n"
    "Without a command, starts Narv (or shows the settings of the one running).\n"
    "\n"
    "Commands, for the Narv that runs:\n"
    "  status [--json] [--follow]  the time left to the next break, or the state\n"
    "                              --json: a line for a waybar custom module\n"
    "                              --follow: a line a second until Narv quits\n"
    "  pause                       stop counting until resumed\n"
    "  resume                      start a full work period after a pause\n"
    "  toggle                      pause or resume\n"
    "  skip                        end the break (not a forced one)\n"
    "  break                       start the next break now\n"
    "  settings                    open the settings\n"
    "  history --csv [--since YYYY-MM-DD]\n"
    "                              the recorded history as CSV (from that day on);\n"
    "                              reads the file, needs no running Narv\n"
    "  --help                      this text\n"
    "  --version                   the version\n";

const QString connectionName = QStringLiteral("narv-command");

// The command's own connection to the session bus, opened and closed by
// withBus() below.
QDBusConnection bus()
{
    return QDBusConnection(connectionName);
}

void say(FILE *stream, const QString &line)
{
    std::fputs(line.toLocal8Bit().constData(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

int usage(const QString &problem)
{
    say(stderr, QStringLiteral("narv: %1").arg(problem));
    std::fputs(usageText, stderr);
    return 2;
}

QDBusMessage call(const QString &interface, const QString &method,
                  const QVariantList &arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        SingleInstance::serviceName(), ControlService::objectPath(), interface, method);
    message.setArguments(arguments);
    // Never have the bus start a Narv for a command.
    message.setAutoStartService(false);
    return bus().call(message, QDBus::Block, 5000);
}

// One line on standard error for a call that failed; the exit code.
int failed(const QDBusMessage &reply)
{
    const QString name = reply.errorName();
    if (name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        say(stderr, QStringLiteral("narv: Narv is not running"));
    else if (name.startsWith(QLatin1String("app.narv.Narv.Error.")))
        say(stderr, QStringLiteral("narv: %1").arg(reply.errorMessage()));
    else
        say(stderr, QStringLiteral("narv: Narv does not answer: %1").arg(reply.errorMessage()));
    return 1;
}

bool narvRuns()
{
    QDBusConnection bus = ::bus();
    if (!bus.isConnected())
        return false;
    QDBusMessage ask = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    ask << SingleInstance::serviceName();
    const QDBusMessage reply = bus.call(ask, QDBus::Block, 5000);
    return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool();
}

// The state as read at one moment, and the seconds counted down since.
struct Status {
    QString state;
    qint64 secondsLeft = -1; // at the moment of reading
    qint64 length = 0;       // seconds
    qint64 nextBreak = 0;    // seconds since the epoch
    qint64 breakEnds = 0;    // seconds since the epoch
    bool skippable = false;
    qint64 waterTally = 0;  // ml
    qint64 waterTarget = 0; // ml
    QElapsedTimer read;

    qint64 left() const
    {
        // Rounded: the timer that asks fires a little after each full second.
        const qint64 counted = (read.elapsed() + 500) / 1000;
        return secondsLeft < 0 ? -1 : std::max<qint64>(0, secondsLeft - counted);
    }
};

bool readStatus(Status &status, QDBusMessage *error)
{
    const QDBusMessage reply = call(QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("GetAll"), {ControlService::interfaceName()});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        *error = reply;
        return false;
    }
    const QVariantMap values = qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    status.state = values.value(QStringLiteral("State")).toString();
    status.secondsLeft = values.value(QStringLiteral("SecondsLeft"), -1).toLongLong();
    status.length = values.value(QStringLiteral("Length")).toLongLong();
    status.nextBreak = values.value(QStringLiteral("NextBreak")).toLongLong();
    status.breakEnds = values.value(QStringLiteral("BreakEnds")).toLongLong();
    status.skippable = values.value(QStringLiteral("Skippable")).toBool();
    status.waterTally = values.value(QStringLiteral("WaterTally")).toLongLong();
    status.waterTarget = values.value(QStringLiteral("WaterTarget")).toLongLong();
    status.read.start();
    return true;
}

QString clock(qint64 secondsSinceEpoch)
{
    return QDateTime::fromSecsSinceEpoch(secondsSinceEpoch).toString(QStringLiteral("HH:mm"));
}

// The time left as the status item shows it, or else the state.
QString statusText(const Status &status)
{
    return status.state == QLatin1String("working") ? timeString(status.left()) : status.state;
}

QString tooltip(const Status &status)
{
    QString first;
    if (status.state == QLatin1String("working"))
        first = QStringLiteral("Next break at %1").arg(clock(status.nextBreak));
    else if (status.state == QLatin1String("break"))
        first = QStringLiteral("Break until %1 (%2 left)%3")
                    .arg(clock(status.breakEnds), timeString(status.left()),
                         status.skippable ? QString() : QStringLiteral(", may not be skipped"));
    else if (status.state == QLatin1String("paused"))
        first = QStringLiteral("Paused");
    else
        first = QStringLiteral("Stopped after a screen lock or while idle");
    return QStringLiteral("%1\nWater: %2 / %3 ml")
        .arg(first)
        .arg(status.waterTally)
        .arg(status.waterTarget);
}

// waybar's custom module: text, tooltip, class and percentage (of the
// running countdown that is left).
QString statusJson(const Status &status)
{
    const qint64 left = status.left();
    const int percentage = left > 0 && status.length > 0 ? int(left * 100 / status.length) : 0;
    const QJsonObject object{{QStringLiteral("text"), statusText(status)},
                             {QStringLiteral("tooltip"), tooltip(status)},
                             {QStringLiteral("class"), status.state},
                             {QStringLiteral("percentage"), percentage}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

// `narv status --follow`: a line a second, counted here from what was read;
// Narv is asked again only when it says its state or schedule changed.
class Follower : public QObject {
    Q_OBJECT
public:
    Follower(Status &status, bool json) : m_status(status), m_json(json)
    {
        m_second.setInterval(1000);
        m_second.setTimerType(Qt::PreciseTimer);
        connect(&m_second, &QTimer::timeout, this, &Follower::print);
        m_second.start();
        QDBusConnection bus = ::bus();
        bus.connect(SingleInstance::serviceName(), ControlService::objectPath(),
                    QStringLiteral("org.freedesktop.DBus.Properties"),
                    QStringLiteral("PropertiesChanged"), this, SLOT(reread()));
        m_watcher.setConnection(bus);
        m_watcher.addWatchedService(SingleInstance::serviceName());
        m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this,
                [] { QCoreApplication::exit(0); });
    }

    void print() { say(stdout, m_json ? statusJson(m_status) : statusText(m_status)); }

public Q_SLOTS:
    void reread()
    {
        QDBusMessage error;
        if (!readStatus(m_status, &error))
            return; // Narv is going; the watcher ends this
        print();
        // The seconds count from this reading on.
        m_second.start();
    }

private:
    Status &m_status;
    bool m_json;
    QTimer m_second;
    QDBusServiceWatcher m_watcher;
};

int status(bool json, bool follow)
{
    if (!narvRuns()) {
        say(stderr, QStringLiteral("narv: Narv is not running"));
        return 1;
    }
    Status current;
    QDBusMessage error;
    if (!readStatus(current, &error))
        return failed(error);
    if (!follow) {
        say(stdout, json ? statusJson(current) : statusText(current));
        return 0;
    }
    Follower follower(current, json);
    follower.print();
    // Gone between the first reading and the watch: nothing will tell us.
    if (!narvRuns())
        return 0;
    return QCoreApplication::exec();
}

int command(const QString &method)
{
    if (!narvRuns()) {
        say(stderr, QStringLiteral("narv: Narv is not running"));
        return 1;
    }
    const QDBusMessage reply = call(ControlService::interfaceName(), method);
    return reply.type() == QDBusMessage::ReplyMessage ? 0 : failed(reply);
}
// Runs `body` with an application object (the loop of --follow) and the
// command's connection to the session bus.
template <typename Body> int withBus(int argc, char **argv, Body body)
{
    QCoreApplication app(argc, argv);
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    // A Narv without a session bus (see SingleInstance) serves no commands.
    int code = 1;
    if (bus().isConnected())
        code = body();
    else
        say(stderr, QStringLiteral("narv: no session bus to reach Narv on"));
    QDBusConnection::disconnectFromBus(connectionName);
    return code;
}
} // namespace

int ControlCommand::run(int argc, char **argv)
{
    // What the command says is its one line. Qt's D-Bus thread, which may
    // still deliver the last reply's bookkeeping while the program's statics
    // go, warns then about types it no longer knows: none of that is for the
    // user, and nothing goes to Narv's log from here.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            say(stderr, QStringLiteral("narv: %1").arg(text));
    });
    const QString name = QString::fromLocal8Bit(argv[1]);
    QStringList options;
    for (int i = 2; i < argc; ++i)
        options << QString::fromLocal8Bit(argv[i]);

    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        if (!options.isEmpty())
            return usage(QStringLiteral("--help takes no arguments"));
        std::fputs(usageText, stdout);
        return 0;
    }
    if (name == QLatin1String("--version")) {
        if (!options.isEmpty())
            return usage(QStringLiteral("--version takes no arguments"));
        say(stdout, QStringLiteral("%1 %2").arg(AppInfo::name(), AppInfo::version()));
        return 0;
    }
    if (name == QLatin1String("status")) {
        bool json = false;
        bool follow = false;
        for (const QString &option : std::as_const(options)) {
            if (option == QLatin1String("--json"))
                json = true;
            else if (option == QLatin1String("--follow"))
                follow = true;
            else
                return usage(QStringLiteral("unknown option for status: %1").arg(option));
        }
        return withBus(argc, argv, [=] { return status(json, follow); });
    }

    if (name == QLatin1String("history"))
        return HistoryCommand::run(options);

    static const QHash<QString, QString> methods{
        {QStringLiteral("pause"), QStringLiteral("Pause")},
        {QStringLiteral("resume"), QStringLiteral("Resume")},
        {QStringLiteral("toggle"), QStringLiteral("Toggle")},
        {QStringLiteral("skip"), QStringLiteral("Skip")},
        {QStringLiteral("break"), QStringLiteral("StartBreak")},
        {QStringLiteral("settings"), QStringLiteral("ShowSettings")},
    };
    const auto method = methods.constFind(name);
    if (method == methods.cend())
        return usage(QStringLiteral("unknown command: %1").arg(name));
    if (!options.isEmpty())
        return usage(QStringLiteral("%1 takes no arguments").arg(name));
    const QString called = *method;
    return withBus(argc, argv, [&called] { return command(called); });
}

#include "ControlCommand.moc"
