#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/FileLogHandler.h"
#include "app/Log.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// The locale whose week rules decide the year in the file name. ICU's own
// default is fixed the first time ICU is asked, so the environment is read
// here on every call instead.
icu::Locale dateLocale(const QString &localeName)
{
    QString name = localeName;
    if (name.isEmpty()) {
        for (const char *variable : {"LC_ALL", "LC_TIME", "LANG"}) {
            name = qEnvironmentVariable(variable);
            if (!name.isEmpty())
                break;
        }
    }
    // "de_DE.UTF-8@euro" -> "de_DE"
    name = name.section(u'.', 0, 0).section(u'@', 0, 0);
    icu::Locale locale;
    if (name.isEmpty())
        locale = icu::Locale::getDefault();
    else if (name == u"C" || name == u"POSIX")
        locale = icu::Locale("en_US_POSIX");
    else
        locale = icu::Locale::createFromName(name.toLatin1().constData());
    // The locale decides where a week starts and so the week-based year; the
    // file name itself stays Gregorian with ASCII digits in every locale.
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    locale.setKeywordValue("numbers", "latn", status);
    return locale;
}

void printToStdout(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

fs::path toPath(const QString &path)
{
    return fs::path(QFile::encodeName(path).toStdString());
}

// Takes the records that arrive while the process logger is being built (a
// Qt warning from inside the build, say). Waiting for the logger there would
// never end, so they go straight to standard error.
const Logger &stderrLogger()
{
    static const Logger logger(AppInfo::identifier(), std::make_shared<StreamLogHandler>(stderr));
    return logger;
}

bool &buildingOnThisThread()
{
    static thread_local bool building = false;
    return building;
}

LogLevel levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return LogLevel::Debug;
    case QtInfoMsg:
        return LogLevel::Info;
    case QtWarningMsg:
        return LogLevel::Warning;
    case QtCriticalMsg:
        return LogLevel::Error;
    case QtFatalMsg:
        return LogLevel::Critical;
    }
    return LogLevel::Info;
}

void routeQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Logging that itself makes Qt complain would come back here; that second
    // message goes to standard error instead of going round in circles.
    static thread_local bool routing = false;
    const Logger &target = routing ? stderrLogger() : logger();

    LogMetadata metadata;
    if (context.category && std::strcmp(context.category, "default") != 0)
        metadata.append({QStringLiteral("category"), QString::fromUtf8(context.category)});
    const LogSource source{context.file ? context.file : "",
                           context.function ? context.function : "", context.line};

    routing = true;
    // Synchronous all the way down: for a fatal message the line is in the
    // file before Qt aborts.
    target.log(levelOf(type), message, metadata, source);
    routing = false;
}

} // namespace

QString logDateText(const QDateTime &when, const QString &localeName)
{
    // A week-based year begins between 26 December and 7 January, whatever
    // the locale's week rules, so from 7 January to 25 December it is the
    // calendar year. ICU is only asked about the days in between: the date
    // format and the locale data it loads for them stay resident, several
    // megabytes in a process that otherwise needs no ICU of its own.
    const QDate day = when.toLocalTime().date();
    const bool weekYearIsCalendarYear =
        (day.month() > 1 || day.day() >= 7) && (day.month() < 12 || day.day() <= 25);
    if (weekYearIsCalendarYear && day.year() >= 1600 && day.year() <= 9999)
        return day.toString(QStringLiteral("yyyyMMdd"));

    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(icu::UnicodeString(u"YYYYMMdd"), dateLocale(localeName), status);
    if (U_SUCCESS(status) && when.isValid()) {
        icu::UnicodeString text;
        format.format(UDate(when.toMSecsSinceEpoch()), text);
        return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
    }
    // Without ICU's help the calendar year is the best there is.
    const QDateTime valid = when.isValid() ? when : QDateTime::currentDateTime();
    return valid.toString(QStringLiteral("yyyyMMdd"));
}

QString logsFolderPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/narv/Logs/");
}

QString logFilePath(const QString &logsFolder, const QDateTime &when, const QString &localeName)
{
    return logsFolder + AppInfo::identifier() + u'.' + logDateText(when, localeName) +
           QStringLiteral(".log");
}

LogFileError prepareLogsFolder(const QString &logsFolder, const QString &dateText)
{
    const fs::path folder = toPath(logsFolder);
    std::error_code ec;

    if (!fs::is_directory(folder, ec)) {
        if (!fs::create_directories(folder, ec) && ec)
            return {LogFileError::Kind::CouldNotCreateFolder, logsFolder, ec.value()};
        return {};
    }

    // Everything is listed before anything goes, so removing a folder does not
    // pull the ground from under the listing.
    QString base = logsFolder;
    if (!base.endsWith(u'/'))
        base += u'/';
    const QString identifier = AppInfo::identifier();
    QList<fs::path> doomed;
    for (fs::recursive_directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const QString path = QFile::decodeName(QByteArray::fromStdString(it->path().string()));
        const QString relative = path.startsWith(base) ? path.mid(base.size()) : path;
        if (relative.startsWith(identifier) && relative.endsWith(u".log") &&
            !relative.contains(dateText))
            doomed.append(it->path());
    }
    if (ec)
        return {LogFileError::Kind::CouldNotListFolder, logsFolder, ec.value()};

    for (const fs::path &path : doomed) {
        // Already gone together with a folder removed before it.
        if (!fs::exists(fs::symlink_status(path, ec)))
            continue;
        fs::remove_all(path, ec);
        if (ec) {
            return {LogFileError::Kind::CouldNotRemoveFile,
                    QFile::decodeName(QByteArray::fromStdString(path.string())), ec.value()};
        }
    }
    return {};
}

QString newestLogFile(const QString &logsFolder, const QDateTime &now)
{
    const QFileInfoList files =
        QDir(logsFolder)
            .entryInfoList({AppInfo::identifier() + QStringLiteral(".*.log")}, QDir::Files,
                           QDir::Time);
    return files.isEmpty() ? logFilePath(logsFolder, now) : files.first().filePath();
}

namespace {

QString helloRecord()
{
    return QStringLiteral("~~~~~~~~~~~~~~~~~~~~~~~~hello ") + AppInfo::name() +
           QStringLiteral("~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~");
}

// Opens the log file; an owner (cleanUpFolder given) first cleans up the
// folder for the day of dateText. Nothing, with the reason in error, on failure.
std::optional<FileLogging> openLogFile(const QString &file, const QString &cleanUpFolder,
                                       const QString &dateText, QString *error)
{
    LogFileError fileError;
    if (!cleanUpFolder.isEmpty())
        fileError = prepareLogsFolder(cleanUpFolder, dateText);
    std::optional<FileLogging> fileLogging;
    if (!fileError.failed())
        fileLogging = FileLogging::open(file, &fileError);
    if (!fileLogging)
        *error = fileError.description();
    return fileLogging;
}

LogHandlerFactory factoryFor(const FileLogging &fileLogging)
{
    return [fileLogging](const QString &label) {
        return std::make_shared<MultiplexLogHandler>(QList<std::shared_ptr<LogHandler>>{
            fileLogging.handler(label), std::make_shared<StreamLogHandler>()});
    };
}

// The handler of this process's logger for the file it opened: the factory
// is installed process-wide with bootstrapProcess, else used directly.
std::shared_ptr<LogHandler> handlerFor(const std::optional<FileLogging> &fileLogging,
                                       bool bootstrapProcess, QString *error)
{
    const QString label = AppInfo::identifier();
    LogHandlerFactory factory;
    if (fileLogging) {
        factory = factoryFor(*fileLogging);
        if (bootstrapProcess && !LoggingSystem::bootstrap(factory))
            *error = QStringLiteral("the logging system was bootstrapped before");
    }
    if (!error->isEmpty())
        printToStdout(QStringLiteral("create logger error: ") + *error + u'\n');
    if (bootstrapProcess)
        return LoggingSystem::makeHandler(label);
    return factory ? factory(label) : nullptr;
}

// The records of a process that does not know yet which file is its own:
// they go to standard output at once and wait, as file lines, for the file.
class HeldLogHandler : public LogHandler {
public:
    LogLevel logLevel() const override
    {
        std::lock_guard lock(m_mutex);
        return m_target ? m_target->logLevel() : LogLevel::Info;
    }
    void setLogLevel(LogLevel level) override
    {
        std::lock_guard lock(m_mutex);
        if (m_target)
            m_target->setLogLevel(level);
    }
    LogMetadata metadata() const override
    {
        std::lock_guard lock(m_mutex);
        return m_target ? m_target->metadata() : m_metadata;
    }
    void setMetadata(const LogMetadata &metadata) override
    {
        std::lock_guard lock(m_mutex);
        m_metadata = metadata;
        if (m_target)
            m_target->setMetadata(metadata);
    }
    void log(LogLevel level, const QString &message, const LogMetadata &metadata,
             const QString &label, const LogSource &source) override
    {
        std::shared_ptr<LogHandler> target;
        {
            std::lock_guard lock(m_mutex);
            target = m_target;
            if (!target) {
                m_stdout.log(level, message, mergeLogMetadata(m_metadata, metadata), label, source);
                m_held.append(formatLogLine(
                    level, label, renderLogMetadata(mergeLogMetadata(m_metadata, metadata)),
                    message));
                return;
            }
        }
        if (level >= target->logLevel())
            target->log(level, message, metadata, label, source);
    }

    // The held lines go into the file, in front of everything that follows;
    // from now on records go to target.
    void release(const std::optional<FileLogging> &fileLogging, std::shared_ptr<LogHandler> target)
    {
        if (!target)
            target = std::make_shared<StreamLogHandler>();
        std::lock_guard lock(m_mutex);
        if (fileLogging) {
            for (const QString &line : std::as_const(m_held))
                fileLogging->stream()->write(line);
        }
        m_held.clear();
        if (!m_metadata.isEmpty())
            target->setMetadata(m_metadata);
        m_target = std::move(target);
    }

private:
    mutable std::mutex m_mutex;
    StreamLogHandler m_stdout;
    LogMetadata m_metadata;
    QStringList m_held;
    std::shared_ptr<LogHandler> m_target;
};

// Which file this process writes to (LogFile).
struct LogFileChoice {
    std::mutex mutex;
    bool waiting = false;           // wait() was called, own() or join() not yet
    std::optional<QString> guestOf; // join()'s file, once known
    QString path;
    std::shared_ptr<HeldLogHandler> held; // the logger's handler while waiting
};

LogFileChoice &logFileChoice()
{
    static LogFileChoice choice;
    return choice;
}

// Puts the file under the records held so far.
void releaseHeld(const std::shared_ptr<HeldLogHandler> &held, const QString &file,
                 const QString &cleanUpFolder, const QString &dateText)
{
    QString error;
    const std::optional<FileLogging> fileLogging =
        openLogFile(file, cleanUpFolder, dateText, &error);
    std::shared_ptr<LogHandler> handler = handlerFor(fileLogging, true, &error);
    {
        std::lock_guard lock(logFileChoice().mutex);
        logFileChoice().path = fileLogging ? file : QString();
    }
    held->release(fileLogging, std::move(handler));
}

} // namespace

BuiltLogger buildLogger(const QString &logsFolder, const QDateTime &now, const QString &localeName,
                        bool bootstrapProcess)
{
    const QString dateText = logDateText(now, localeName);
    const QString file =
        logsFolder + AppInfo::identifier() + u'.' + dateText + QStringLiteral(".log");

    QString error;
    const std::optional<FileLogging> fileLogging = openLogFile(file, logsFolder, dateText, &error);
    Logger logger(AppInfo::identifier(), handlerFor(fileLogging, bootstrapProcess, &error));
    logger.info(helloRecord());
    return {logger, error, fileLogging ? file : QString()};
}

void LogFile::wait()
{
    std::lock_guard lock(logFileChoice().mutex);
    logFileChoice().waiting = true;
}

void LogFile::own()
{
    LogFileChoice &choice = logFileChoice();
    std::shared_ptr<HeldLogHandler> held;
    {
        std::lock_guard lock(choice.mutex);
        if (!choice.waiting)
            return;
        choice.waiting = false;
        held = choice.held;
    }
    if (!held)
        return; // nothing logged yet: the logger is built the owner's way
    const QString folder = logsFolderPath();
    const QString dateText = logDateText(Clock::now());
    releaseHeld(held, folder + AppInfo::identifier() + u'.' + dateText + QStringLiteral(".log"),
                folder, dateText);
}

void LogFile::join(const QString &path)
{
    const QString file = path.isEmpty() ? newestLogFile(logsFolderPath(), Clock::now()) : path;
    LogFileChoice &choice = logFileChoice();
    std::shared_ptr<HeldLogHandler> held;
    {
        std::lock_guard lock(choice.mutex);
        choice.guestOf = file;
        choice.waiting = false;
        held = choice.held;
    }
    if (held)
        releaseHeld(held, file, {}, {});
}

QString LogFile::path()
{
    std::lock_guard lock(logFileChoice().mutex);
    return logFileChoice().path;
}

QString Logger::logfilePath()
{
    return logFilePath(logsFolderPath(), Clock::now());
}

const Logger &logger()
{
    bool &building = buildingOnThisThread();
    if (building)
        return stderrLogger();
    // Built once; other threads wait here until it is done. Never destroyed,
    // so logging keeps working while static objects go away at exit.
    static const Logger *const instance = [&building] {
        building = true;
        LogFileChoice &choice = logFileChoice();
        std::unique_lock lock(choice.mutex);
        Logger *built = nullptr;
        if (choice.waiting) {
            choice.held = std::make_shared<HeldLogHandler>();
            built = new Logger(AppInfo::identifier(), choice.held);
            lock.unlock();
            built->info(helloRecord());
        } else if (choice.guestOf) {
            // Another process's file: no hello record of its own in it.
            const QString file = *choice.guestOf;
            lock.unlock();
            QString error;
            const std::optional<FileLogging> fileLogging = openLogFile(file, {}, {}, &error);
            built = new Logger(AppInfo::identifier(), handlerFor(fileLogging, true, &error));
            lock.lock();
            choice.path = fileLogging ? file : QString();
        } else {
            lock.unlock();
            const BuiltLogger owner = buildLogger(logsFolderPath(), Clock::now(), {}, true);
            built = new Logger(owner.logger);
            lock.lock();
            choice.path = owner.file;
        }
        building = false;
        return built;
    }();
    return *instance;
}

void installQtMessageRouting()
{
    qInstallMessageHandler(routeQtMessage);
}
