#include "app/Log.h"

#include <QMap>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <mutex>

namespace {

QString renderValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QStringList:
        return u'[' + value.toStringList().join(u", ") + u']';
    case QMetaType::QVariantList: {
        QStringList parts;
        for (const QVariant &item : value.toList())
            parts << renderValue(item);
        return u'[' + parts.join(u", ") + u']';
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        // A QVariantHash has no stable order; going through QVariantMap sorts the
        // keys so the same metadata always prints the same way.
        const QVariantMap map = value.toMap();
        if (map.isEmpty())
            return QStringLiteral("[:]");
        QStringList parts;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            parts << it.key() + QStringLiteral(": ") + renderValue(it.value());
        return u'[' + parts.join(u", ") + u']';
    }
    default:
        return value.toString();
    }
}

// Where records go before anything is bootstrapped, and the factory that replaces it.
struct LoggingSystemState {
    std::mutex mutex;
    bool bootstrapped = false;
    LogHandlerFactory factory;
};

LoggingSystemState &loggingSystem()
{
    static LoggingSystemState state;
    return state;
}

} // namespace

QString logLevelText(LogLevel level)
{
    switch (level) {
    case LogLevel::Trace:
        return QStringLiteral("trace");
    case LogLevel::Debug:
        return QStringLiteral("debug");
    case LogLevel::Info:
        return QStringLiteral("info");
    case LogLevel::Notice:
        return QStringLiteral("notice");
    case LogLevel::Warning:
        return QStringLiteral("warning");
    case LogLevel::Error:
        return QStringLiteral("error");
    case LogLevel::Critical:
        return QStringLiteral("critical");
    }
    return QStringLiteral("info");
}

QString renderLogMetadata(const LogMetadata &metadata)
{
    QString text;
    for (const auto &[key, value] : metadata) {
        if (!text.isEmpty())
            text += u' ';
        text += key + u'=' + renderValue(value);
    }
    return text;
}

LogMetadata mergeLogMetadata(const LogMetadata &base, const LogMetadata &overrides)
{
    LogMetadata merged = base;
    for (const auto &entry : overrides) {
        auto it = std::find_if(merged.begin(), merged.end(),
                               [&](const auto &existing) { return existing.first == entry.first; });
        if (it != merged.end())
            it->second = entry.second;
        else
            merged.append(entry);
    }
    return merged;
}

QString formatLogLine(LogLevel level, const QString &label, const QString &prettyMetadata,
                      const QString &message)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char timestamp[255];
    const std::size_t length =
        std::strftime(timestamp, sizeof timestamp, "%Y-%m-%dT%H:%M:%S%z", &local);

    QString line = QString::fromLatin1(timestamp, qsizetype(length));
    line += u' ' + logLevelText(level) + u' ' + label + QStringLiteral(" :");
    if (!prettyMetadata.isEmpty())
        line += u' ' + prettyMetadata;
    line += u' ' + message + u'\n';
    return line;
}

Logger::Logger(QString label, std::shared_ptr<LogHandler> handler)
    : m_label(std::move(label)), m_handler(std::move(handler))
{
    if (!m_handler)
        m_handler = std::make_shared<StreamLogHandler>();
}

void Logger::log(LogLevel level, const QString &message, const LogMetadata &metadata,
                 const LogSource &source) const
{
    if (level < m_handler->logLevel())
        return;
    m_handler->log(level, message, metadata, m_label, source);
}

bool LoggingSystem::bootstrap(LogHandlerFactory factory)
{
    auto &state = loggingSystem();
    std::lock_guard lock(state.mutex);
    if (state.bootstrapped)
        return false;
    state.bootstrapped = true;
    state.factory = std::move(factory);
    return true;
}

std::shared_ptr<LogHandler> LoggingSystem::makeHandler(const QString &label)
{
    LogHandlerFactory factory;
    {
        auto &state = loggingSystem();
        std::lock_guard lock(state.mutex);
        factory = state.factory;
    }
    // The factory runs outside the lock: it may well log something itself.
    if (factory) {
        if (auto handler = factory(label))
            return handler;
    }
    return std::make_shared<StreamLogHandler>();
}

MultiplexLogHandler::MultiplexLogHandler(QList<std::shared_ptr<LogHandler>> handlers)
    : m_handlers(std::move(handlers))
{
    m_handlers.removeAll(nullptr);
}

LogLevel MultiplexLogHandler::logLevel() const
{
    // The most talkative handler decides what reaches log(); each handler then
    // filters for itself.
    LogLevel lowest = LogLevel::Critical;
    for (const auto &handler : m_handlers)
        lowest = std::min(lowest, handler->logLevel());
    return lowest;
}

void MultiplexLogHandler::setLogLevel(LogLevel level)
{
    for (const auto &handler : m_handlers)
        handler->setLogLevel(level);
}

LogMetadata MultiplexLogHandler::metadata() const
{
    LogMetadata merged;
    for (const auto &handler : m_handlers)
        merged = mergeLogMetadata(merged, handler->metadata());
    return merged;
}

void MultiplexLogHandler::setMetadata(const LogMetadata &metadata)
{
    for (const auto &handler : m_handlers)
        handler->setMetadata(metadata);
}

void MultiplexLogHandler::log(LogLevel level, const QString &message, const LogMetadata &metadata,
                              const QString &label, const LogSource &source)
{
    for (const auto &handler : m_handlers) {
        if (level >= handler->logLevel())
            handler->log(level, message, metadata, label, source);
    }
}

void StreamLogHandler::log(LogLevel level, const QString &message, const LogMetadata &metadata,
                           const QString &label, const LogSource &)
{
    const QString pretty = renderLogMetadata(mergeLogMetadata(m_metadata, metadata));
    const QByteArray line = formatLogLine(level, label, pretty, message).toUtf8();
    // The whole line in one go, flushed at once so it is not stuck in a buffer
    // when the process ends abruptly.
    std::fwrite(line.constData(), 1, std::size_t(line.size()), m_stream);
    std::fflush(m_stream);
}
