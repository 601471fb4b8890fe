#pragma once

// A small logging front end: a Logger carries a label and hands records to a
// LogHandler; the handler factory is installed once per process
// (LoggingSystem::bootstrap). MultiplexLogHandler fans a record out to several
// handlers, StreamLogHandler writes to standard output.

#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>

#include <cstdio>
#include <functional>
#include <memory>

enum class LogLevel { Trace, Debug, Info, Notice, Warning, Error, Critical };

// The text of a level as it appears in a log line ("info", "warning", ...).
QString logLevelText(LogLevel level);

// Metadata keeps the order in which entries were added; a value is printed as
// its text (lists and maps get a bracketed form).
using LogMetadata = QList<QPair<QString, QVariant>>;

// Renders metadata as "key=value key=value"; empty metadata gives an empty string.
QString renderLogMetadata(const LogMetadata &metadata);

// Merges the call's metadata over the handler's: a key given by the call wins,
// and keeps the handler's position.
LogMetadata mergeLogMetadata(const LogMetadata &base, const LogMetadata &overrides);

// One record as a log line, the same for the file and for standard output:
// "<local time> <level> <label> :[ <metadata>] <message>\n". The time is the
// moment of the call; prettyMetadata is already rendered (may be empty).
QString formatLogLine(LogLevel level, const QString &label, const QString &prettyMetadata,
                      const QString &message);

struct LogSource {
    const char *file = "";     // source file path as __FILE__ gives it
    const char *function = ""; // function name
    int line = 0;
};

class LogHandler {
public:
    virtual ~LogHandler() = default;
    virtual LogLevel logLevel() const = 0;
    virtual void setLogLevel(LogLevel level) = 0;
    virtual LogMetadata metadata() const = 0;
    virtual void setMetadata(const LogMetadata &metadata) = 0;
    virtual void log(LogLevel level, const QString &message, const LogMetadata &metadata,
                     const QString &label, const LogSource &source) = 0;
};

using LogHandlerFactory = std::function<std::shared_ptr<LogHandler>(const QString &label)>;

class Logger {
public:
    Logger(QString label, std::shared_ptr<LogHandler> handler);

    const QString &label() const { return m_label; }
    LogHandler &handler() const { return *m_handler; }

    // Hands the record to the handler when its level is at or above the
    // handler's level.
    void log(LogLevel level, const QString &message, const LogMetadata &metadata = {},
             const LogSource &source = {}) const;

    void trace(const QString &m, const LogSource &s = {}) const { log(LogLevel::Trace, m, {}, s); }
    void debug(const QString &m, const LogSource &s = {}) const { log(LogLevel::Debug, m, {}, s); }
    void info(const QString &m, const LogSource &s = {}) const { log(LogLevel::Info, m, {}, s); }
    void notice(const QString &m, const LogSource &s = {}) const
    {
        log(LogLevel::Notice, m, {}, s);
    }
    void warning(const QString &m, const LogSource &s = {}) const
    {
        log(LogLevel::Warning, m, {}, s);
    }
    void error(const QString &m, const LogSource &s = {}) const { log(LogLevel::Error, m, {}, s); }
    void critical(const QString &m, const LogSource &s = {}) const
    {
        log(LogLevel::Critical, m, {}, s);
    }

    // Today's log file, computed afresh; nothing is checked or created.
    static QString logfilePath();

private:
    QString m_label;
    std::shared_ptr<LogHandler> m_handler;
};

namespace LoggingSystem {
// Installs the handler factory. Only the first call in a process takes effect;
// later calls return false.
bool bootstrap(LogHandlerFactory factory);
// A handler for a label from the installed factory, or a StreamLogHandler when
// nothing was installed.
std::shared_ptr<LogHandler> makeHandler(const QString &label);
} // namespace LoggingSystem

class MultiplexLogHandler : public LogHandler {
public:
    explicit MultiplexLogHandler(QList<std::shared_ptr<LogHandler>> handlers);
    LogLevel logLevel() const override;
    void setLogLevel(LogLevel level) override;
    LogMetadata metadata() const override;
    void setMetadata(const LogMetadata &metadata) override;
    // Hands the record to every handler whose own level lets it through.
    void log(LogLevel level, const QString &message, const LogMetadata &metadata,
             const QString &label, const LogSource &source) override;

private:
    QList<std::shared_ptr<LogHandler>> m_handlers;
};

// Writes records to standard output (or another stream, such as standard
// error), in the same line format as the log file.
class StreamLogHandler : public LogHandler {
public:
    explicit StreamLogHandler(std::FILE *stream = stdout) : m_stream(stream) {}
    LogLevel logLevel() const override { return m_level; }
    void setLogLevel(LogLevel level) override { m_level = level; }
    LogMetadata metadata() const override { return m_metadata; }
    void setMetadata(const LogMetadata &metadata) override { m_metadata = metadata; }
    void log(LogLevel level, const QString &message, const LogMetadata &metadata,
             const QString &label, const LogSource &source) override;

private:
    std::FILE *m_stream;
    LogLevel m_level = LogLevel::Info;
    LogMetadata m_metadata;
};

// The process-wide logger, built on first use (see Logger.cpp).
const Logger &logger();

// Whose log file this process writes to. One process owns the log: the
// counting process, which picks the day's file once, at its start, and cleans
// up the older files then and only then. Its window process and a second
// start that only hands over write to that same file and delete nothing.
// A process that says nothing owns the log from its first record on.
namespace LogFile {
// Called first thing by a process that learns only later whether it owns the
// log: its records go to standard output at once and wait for own() or
// join() to say which file they belong in.
void wait();
// Owns the log: today's file, the older ones cleaned up now.
void own();
// Writes to the file another process of the program owns: `path`, or when
// that is empty the most recently written log file (today's when there is
// none). Before the first record, or after wait(); without wait() the hello
// record is left out.
void join(const QString &path);
// The file this process's records go to; empty while that is not decided or
// when the file could not be had.
QString path();
} // namespace LogFile

// Routes Qt's own messages (qDebug, qWarning, qFatal, ...) into logger().
void installQtMessageRouting();

// clang-format off
#define NARV_LOG_SOURCE                                                                            \
    LogSource { __FILE__, __func__, __LINE__ }
#define NARV_LOG(level, message) ::logger().log((level), (message), {}, NARV_LOG_SOURCE)
#define LOG_INFO(message) NARV_LOG(LogLevel::Info, (message))
#define LOG_DEBUG(message) NARV_LOG(LogLevel::Debug, (message))
#define LOG_NOTICE(message) NARV_LOG(LogLevel::Notice, (message))
#define LOG_WARNING(message) NARV_LOG(LogLevel::Warning, (message))
#define LOG_ERROR(message) NARV_LOG(LogLevel::Error, (message))
// clang-format on
