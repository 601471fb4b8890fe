#include "settings/PreferencesStore.h"

#include "app/Log.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// A stored value in a form that compares equal whether it came from our own
// write (typed) or from reading the file back (text).
QString comparable(const QVariant &value)
{
    if (!value.isValid())
        return QStringLiteral("\x01invalid");
    if (value.typeId() == QMetaType::QStringList)
        return QStringLiteral("\x01list\x1f") + value.toStringList().join(QChar(0x1f));
    return value.toString();
}

void logBadValue(const QString &key, const QVariant &value, const char *type)
{
    LOG_WARNING(
        QStringLiteral("settings: \"%1\" holds \"%2\", which is not a %3; using the default")
            .arg(key, comparable(value), QLatin1String(type)));
}

} // namespace

PreferencesStore::PreferencesStore(const QString &filePath, QObject *parent)
    : QObject(parent), m_settings(filePath, QSettings::IniFormat)
{
    m_snapshot = snapshot();
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &PreferencesStore::reload);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &PreferencesStore::reload);
    watch();
}

QString PreferencesStore::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/narv/narv.conf");
}

PreferencesStore &PreferencesStore::instance()
{
    static PreferencesStore *store = new PreferencesStore(defaultFilePath());
    return *store;
}

bool PreferencesStore::contains(const QString &key) const
{
    return m_settings.contains(key);
}

bool PreferencesStore::boolValue(const QString &key, bool fallback) const
{
    if (!m_settings.contains(key))
        return fallback;
    const QVariant v = m_settings.value(key);
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    if (v.typeId() == QMetaType::QString) {
        const QString s = v.toString().trimmed().toLower();
        if (s == QLatin1String("true") || s == QLatin1String("1"))
            return true;
        if (s == QLatin1String("false") || s == QLatin1String("0"))
            return false;
    }
    logBadValue(key, v, "boolean");
    return fallback;
}

qint64 PreferencesStore::intValue(const QString &key, qint64 fallback) const
{
    if (!m_settings.contains(key))
        return fallback;
    const QVariant v = m_settings.value(key);
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
        return v.toLongLong();
    case QMetaType::QString: {
        bool ok = false;
        const qint64 n = v.toString().trimmed().toLongLong(&ok);
        if (ok)
            return n;
        break;
    }
    default:
        break;
    }
    logBadValue(key, v, "whole number");
    return fallback;
}

double PreferencesStore::doubleValue(const QString &key, double fallback) const
{
    if (!m_settings.contains(key))
        return fallback;
    const QVariant v = m_settings.value(key);
    switch (v.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::LongLong:
        return v.toDouble();
    case QMetaType::QString: {
        bool ok = false;
        const double d = v.toString().trimmed().toDouble(&ok);
        if (ok)
            return d;
        break;
    }
    default:
        break;
    }
    logBadValue(key, v, "number");
    return fallback;
}

QString PreferencesStore::stringValue(const QString &key, const QString &fallback) const
{
    if (!m_settings.contains(key))
        return fallback;
    const QVariant v = m_settings.value(key);
    if (v.typeId() == QMetaType::QString)
        return v.toString();
    logBadValue(key, v, "text");
    return fallback;
}

bool PreferencesStore::boolValue(Setting setting) const
{
    return boolValue(Settings::key(setting), Settings::entry(setting).byDefault != 0);
}

qint64 PreferencesStore::intValue(Setting setting) const
{
    return intValue(Settings::key(setting), qint64(Settings::entry(setting).byDefault));
}

double PreferencesStore::doubleValue(Setting setting) const
{
    return doubleValue(Settings::key(setting), Settings::entry(setting).byDefault);
}

QString PreferencesStore::stringValue(Setting setting) const
{
    return stringValue(Settings::key(setting),
                       QString::fromUtf8(Settings::entry(setting).textByDefault));
}

std::optional<QStringList> PreferencesStore::stringList(const QString &key) const
{
    if (!m_settings.contains(key))
        return std::nullopt;
    const QVariant v = m_settings.value(key);
    // QSettings writes an empty list as "@Invalid()" and a one-element list as a
    // plain value; both have to come back as lists.
    if (!v.isValid())
        return QStringList();
    if (v.typeId() == QMetaType::QStringList)
        return v.toStringList();
    if (v.typeId() == QMetaType::QString)
        return QStringList{v.toString()};
    logBadValue(key, v, "list of texts");
    return std::nullopt;
}

void PreferencesStore::setBool(const QString &key, bool value)
{
    write(key, value);
}

void PreferencesStore::setInt(const QString &key, qint64 value)
{
    write(key, value);
}

void PreferencesStore::setDouble(const QString &key, double value)
{
    write(key, value);
}

void PreferencesStore::setString(const QString &key, const QString &value)
{
    write(key, value);
}

void PreferencesStore::setStringList(const QString &key, const QStringList &value)
{
    write(key, value);
}

void PreferencesStore::remove(const QString &key)
{
    m_settings.remove(key);
    flush();
    if (m_snapshot.remove(key) > 0)
        Q_EMIT changed(key);
}

void PreferencesStore::clear()
{
    const QStringList keys = m_snapshot.keys();
    m_settings.clear();
    flush();
    m_snapshot.clear();
    for (const QString &key : keys)
        Q_EMIT changed(key);
}

void PreferencesStore::write(const QString &key, const QVariant &value)
{
    m_settings.setValue(key, value);
    flush();
    m_snapshot.insert(key, comparable(value));
    Q_EMIT changed(key);
}

void PreferencesStore::reportWriteError()
{
    if (m_reportedWriteError)
        return;
    LOG_WARNING(QStringLiteral("settings: cannot write %1; changes last until Narv quits")
                    .arg(m_settings.fileName()));
    m_reportedWriteError = true;
}

bool PreferencesStore::checkWritable()
{
    const QFileInfo file(m_settings.fileName());
    const QString dir = file.absolutePath();
    // QSettings creates the folder itself on the first save; make sure it can.
    const bool writable = QDir().mkpath(dir) && QFileInfo(dir).isDir() &&
                          QFileInfo(dir).isWritable() && (!file.exists() || file.isWritable());
    if (!writable)
        reportWriteError();
    return writable;
}

void PreferencesStore::flush()
{
    m_settings.sync();
    if (m_settings.status() != QSettings::NoError) {
        reportWriteError();
        return;
    }
    watch();
}

void PreferencesStore::watch()
{
    const QFileInfo file(m_settings.fileName());
    const QString dir = file.absolutePath();
    // The file is replaced on every save, which drops it from the watcher: watch
    // the folder too and add the file again whenever it is there.
    if (QFileInfo::exists(dir) && !m_watcher.directories().contains(dir))
        m_watcher.addPath(dir);
    if (file.exists() && !m_watcher.files().contains(file.absoluteFilePath()))
        m_watcher.addPath(file.absoluteFilePath());
}

QHash<QString, QString> PreferencesStore::snapshot() const
{
    QHash<QString, QString> result;
    const QStringList keys = m_settings.allKeys();
    for (const QString &key : keys)
        result.insert(key, comparable(m_settings.value(key)));
    return result;
}

void PreferencesStore::reload()
{
    watch();
    m_settings.sync();
    const QHash<QString, QString> now = snapshot();
    QStringList changedKeys;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        const auto old = m_snapshot.constFind(it.key());
        if (old == m_snapshot.cend() || old.value() != it.value())
            changedKeys.append(it.key());
    }
    for (auto it = m_snapshot.cbegin(); it != m_snapshot.cend(); ++it) {
        if (!now.contains(it.key()))
            changedKeys.append(it.key());
    }
    m_snapshot = now;
    for (const QString &key : std::as_const(changedKeys))
        Q_EMIT changed(key);
}
