#pragma once

// Log records in a file: one file per day under the user's cache folder, named
// after the application and the date. FileHandlerOutputStream appends to the
// file, FileLogging shares one stream among the handlers made from it, and
// FileLogHandler writes the records of one label.

#include "app/Log.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

// Why something went wrong with the log file or its folder.
struct LogFileError {
    enum class Kind {
        None,
        CouldNotCreateFile,
        CouldNotOpenFile,
        CouldNotCreateFolder,
        CouldNotRemoveFile,
        CouldNotListFolder,
    };

    Kind kind = Kind::None;
    QString path;
    int code = 0; // errno when the system gave one

    bool failed() const { return kind != Kind::None; }
    // e.g. "couldNotCreateFile /path/to/file: Not a directory"
    QString description() const;
};

// Appends UTF-8 text to a file. Every write() is a single write(2) on a file
// opened with O_APPEND, without buffering, so a line is never split and is in
// the file as soon as write() returns, also when the process dies right after.
class FileHandlerOutputStream {
public:
    // Creates an empty file when there is none, then opens it for appending;
    // what was in the file stays in front. Returns null and fills error on failure.
    static std::shared_ptr<FileHandlerOutputStream> open(const QString &localFile,
                                                         LogFileError *error = nullptr);
    ~FileHandlerOutputStream();
    FileHandlerOutputStream(const FileHandlerOutputStream &) = delete;
    FileHandlerOutputStream &operator=(const FileHandlerOutputStream &) = delete;

    const QString &path() const { return m_path; }
    // Returns false when the system refused the bytes.
    bool write(const QString &text);

private:
    FileHandlerOutputStream(QString path, int fd);

    QString m_path;
    int m_fd = -1;
};

class FileLogHandler;

// One open log file; every handler made from it writes to the same stream.
class FileLogging {
public:
    // Opens (creating when needed) the file; nothing on failure, and error says why.
    static std::optional<FileLogging> open(const QString &localFile, LogFileError *error = nullptr);
    // A logger with a single FileLogHandler on localFile.
    static std::optional<Logger> logger(const QString &label, const QString &localFile,
                                        LogFileError *error = nullptr);

    std::shared_ptr<FileLogHandler> handler(const QString &label) const;
    const std::shared_ptr<FileHandlerOutputStream> &stream() const { return m_stream; }

private:
    explicit FileLogging(std::shared_ptr<FileHandlerOutputStream> stream);

    std::shared_ptr<FileHandlerOutputStream> m_stream;
};

// Writes the records of one label to a FileLogging's stream. It takes no lock:
// each line goes out in one write, which the system keeps whole.
class FileLogHandler : public LogHandler {
public:
    FileLogHandler(QString label, const FileLogging &fileLogging);

    const QString &label() const { return m_label; }
    LogLevel logLevel() const override { return m_logLevel; }
    void setLogLevel(LogLevel level) override { m_logLevel = level; }
    LogMetadata metadata() const override { return m_metadata; }
    // Also renders the metadata once, for every record that brings none of its own.
    void setMetadata(const LogMetadata &metadata) override;
    const QString &prettyMetadata() const { return m_prettyMetadata; }

    // One metadata entry; an invalid QVariant when the key is not there.
    QVariant metadataValue(const QString &key) const;
    // Sets (or adds at the end) one entry; goes through setMetadata.
    void setMetadataValue(const QString &key, const QVariant &value);

    // Writes "<time> <level> <label> :[ <metadata>] <message>"; the source
    // location is not written.
    void log(LogLevel level, const QString &message, const LogMetadata &metadata,
             const QString &label, const LogSource &source) override;

private:
    std::shared_ptr<FileHandlerOutputStream> m_stream;
    QString m_label;
    LogLevel m_logLevel = LogLevel::Info;
    LogMetadata m_metadata;
    QString m_prettyMetadata;
};

// ---- The application's log file (implemented in Logger.cpp) ----

// The date part of a log file name: ICU pattern "YYYYMMdd", i.e. the
// week-based year of the locale, then month and day. localeName is a POSIX or
// ICU locale name ("de_DE", "en_US.UTF-8"); empty takes LC_ALL, LC_TIME, then
// LANG from the environment, and ICU's default locale when none is set.
QString logDateText(const QDateTime &when, const QString &localeName = {});

// "<cache folder>/narv/Logs/"; honours $XDG_CACHE_HOME.
QString logsFolderPath();

// "<logsFolder><identifier>.<date text>.log"; logsFolder ends with a slash.
QString logFilePath(const QString &logsFolder, const QDateTime &when,
                    const QString &localeName = {});

// Makes logsFolder ready for today's file: when it exists, removes every entry
// below it whose path relative to it starts with the identifier, ends with
// ".log" and does not contain dateText; when it does not exist, creates it.
// Stops at the first removal that fails, and before removing anything when
// the folder cannot be listed to the end.
LogFileError prepareLogsFolder(const QString &logsFolder, const QString &dateText);

// The log file another process of the program writes to: the one in
// logsFolder written last, or today's (of `now`) when there is none.
QString newestLogFile(const QString &logsFolder, const QDateTime &now);

struct BuiltLogger {
    Logger logger;
    QString error; // empty when the log file is in place
    QString file;  // the log file records go to; empty when there is none
};

// Builds the application logger on logsFolder for the day of `now`: prepares
// the folder, opens the file and hands out a handler that writes to the file
// (level info) and to standard output. When the file cannot be had, prints
// "create logger error: ..." to standard output and logs to standard output
// only. Then writes the hello record. With bootstrapProcess the handler
// factory is installed process-wide (LoggingSystem::bootstrap); without it the
// factory is used directly, which lets tests build as often as they like.
BuiltLogger buildLogger(const QString &logsFolder, const QDateTime &now,
                        const QString &localeName = {}, bool bootstrapProcess = false);
