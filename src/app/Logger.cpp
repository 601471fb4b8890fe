#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/FileLogHandler.h"
#include "app/Log.h"

#include <QFile>
#include <QStandardPaths>

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {
bool g_leaveOutHelloRecord = false;
} // namespace

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

BuiltLogger buildLogger(const QString &logsFolder, const QDateTime &now, const QString &localeName,
                        bool bootstrapProcess)
{
    const QString label = AppInfo::identifier();
    const QString dateText = logDateText(now, localeName);
    const QString file =
        logsFolder + AppInfo::identifier() + u'.' + dateText + QStringLiteral(".log");

    QString error;
    LogHandlerFactory factory;
    LogFileError fileError = prepareLogsFolder(logsFolder, dateText);
    std::optional<FileLogging> fileLogging;
    if (!fileError.failed())
        fileLogging = FileLogging::open(file, &fileError);
    if (fileLogging) {
        factory = [fileLogging = *fileLogging](const QString &label) {
            return std::make_shared<MultiplexLogHandler>(QList<std::shared_ptr<LogHandler>>{
                fileLogging.handler(label), std::make_shared<StreamLogHandler>()});
        };
        if (bootstrapProcess && !LoggingSystem::bootstrap(factory))
            error = QStringLiteral("the logging system was bootstrapped before");
    } else {
        error = fileError.description();
    }

    if (!error.isEmpty())
        printToStdout(QStringLiteral("create logger error: ") + error + u'\n');

    std::shared_ptr<LogHandler> handler;
    if (bootstrapProcess)
        handler = LoggingSystem::makeHandler(label);
    else if (factory)
        handler = factory(label);
    Logger logger(label, std::move(handler));

    if (!g_leaveOutHelloRecord)
        logger.info(QStringLiteral("~~~~~~~~~~~~~~~~~~~~~~~~hello ") + AppInfo::name() +
                    QStringLiteral("~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~"));
    return {logger, error};
}

void leaveOutHelloRecord()
{
    g_leaveOutHelloRecord = true;
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
        auto *built = new Logger(buildLogger(logsFolderPath(), Clock::now(), {}, true).logger);
        building = false;
        return built;
    }();
    return *instance;
}

void installQtMessageRouting()
{
    qInstallMessageHandler(routeQtMessage);
}
