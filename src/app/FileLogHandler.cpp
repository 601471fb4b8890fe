#include "app/FileLogHandler.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

void setError(LogFileError *error, LogFileError::Kind kind, const QString &path, int code)
{
    if (error)
        *error = LogFileError{kind, path, code};
}

} // namespace

QString LogFileError::description() const
{
    QString name;
    switch (kind) {
    case Kind::None:
        return {};
    case Kind::CouldNotCreateFile:
        name = QStringLiteral("couldNotCreateFile");
        break;
    case Kind::CouldNotOpenFile:
        name = QStringLiteral("couldNotOpenFile");
        break;
    case Kind::CouldNotCreateFolder:
        name = QStringLiteral("couldNotCreateFolder");
        break;
    case Kind::CouldNotRemoveFile:
        name = QStringLiteral("couldNotRemoveFile");
        break;
    case Kind::CouldNotListFolder:
        name = QStringLiteral("couldNotListFolder");
        break;
    }
    QString text = name + u' ' + path;
    if (code != 0)
        text += QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(code));
    return text;
}

std::shared_ptr<FileHandlerOutputStream> FileHandlerOutputStream::open(const QString &localFile,
                                                                       LogFileError *error)
{
    const QByteArray path = QFile::encodeName(localFile);

    // Created apart from opening so the two failures can be told apart.
    if (::access(path.constData(), F_OK) != 0) {
        const int created = ::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (created < 0) {
            setError(error, LogFileError::Kind::CouldNotCreateFile, localFile, errno);
            return nullptr;
        }
        ::close(created);
    }

    // O_APPEND: every write lands at the end, even when another process (a
    // second instance, say) appends to the same file.
    const int fd = ::open(path.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (fd < 0) {
        setError(error, LogFileError::Kind::CouldNotOpenFile, localFile, errno);
        return nullptr;
    }
    return std::shared_ptr<FileHandlerOutputStream>(new FileHandlerOutputStream(localFile, fd));
}

FileHandlerOutputStream::FileHandlerOutputStream(QString path, int fd)
    : m_path(std::move(path)), m_fd(fd)
{
}

FileHandlerOutputStream::~FileHandlerOutputStream()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool FileHandlerOutputStream::write(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const char *data = bytes.constData();
    std::size_t left = std::size_t(bytes.size());
    while (left > 0) {
        // One call carries the whole text; the loop only matters when a signal
        // interrupts it or the disk fills up half way.
        const ssize_t written = ::write(m_fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += written;
        left -= std::size_t(written);
    }
    return true;
}

std::optional<FileLogging> FileLogging::open(const QString &localFile, LogFileError *error)
{
    auto stream = FileHandlerOutputStream::open(localFile, error);
    if (!stream)
        return std::nullopt;
    return FileLogging(std::move(stream));
}

std::optional<Logger> FileLogging::logger(const QString &label, const QString &localFile,
                                          LogFileError *error)
{
    const auto logging = open(localFile, error);
    if (!logging)
        return std::nullopt;
    return Logger(label, logging->handler(label));
}

FileLogging::FileLogging(std::shared_ptr<FileHandlerOutputStream> stream)
    : m_stream(std::move(stream))
{
}

std::shared_ptr<FileLogHandler> FileLogging::handler(const QString &label) const
{
    return std::make_shared<FileLogHandler>(label, *this);
}

FileLogHandler::FileLogHandler(QString label, const FileLogging &fileLogging)
    : m_stream(fileLogging.stream()), m_label(std::move(label))
{
}

void FileLogHandler::setMetadata(const LogMetadata &metadata)
{
    m_metadata = metadata;
    m_prettyMetadata = renderLogMetadata(m_metadata);
}

QVariant FileLogHandler::metadataValue(const QString &key) const
{
    for (const auto &[k, v] : m_metadata) {
        if (k == key)
            return v;
    }
    return {};
}

void FileLogHandler::setMetadataValue(const QString &key, const QVariant &value)
{
    setMetadata(mergeLogMetadata(m_metadata, {{key, value}}));
}

void FileLogHandler::log(LogLevel level, const QString &message, const LogMetadata &metadata,
                         const QString &, const LogSource &)
{
    const QString pretty = metadata.isEmpty()
                               ? m_prettyMetadata
                               : renderLogMetadata(mergeLogMetadata(m_metadata, metadata));
    m_stream->write(formatLogLine(level, m_label, pretty, message));
}
