#pragma once

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QSettings>
#include <QStringList>

#include "settings/Settings.h"

#include <optional>

// Typed access to the settings file (INI, $XDG_CONFIG_HOME/narv/narv.conf).
//
// Reads never write: a missing key, or a value that does not parse as the type
// asked for, gives the caller's default. Writes go to disk at once. changed(key)
// fires for our own writes and for edits another process makes to the file.
class PreferencesStore : public QObject {
    Q_OBJECT
public:
    explicit PreferencesStore(const QString &filePath, QObject *parent = nullptr);

    // The store of this process, at the standard location.
    static PreferencesStore &instance();
    static QString defaultFilePath();

    QString filePath() const { return m_settings.fileName(); }
    bool contains(const QString &key) const;

    bool boolValue(const QString &key, bool fallback) const;
    qint64 intValue(const QString &key, qint64 fallback) const;
    double doubleValue(const QString &key, double fallback) const;
    QString stringValue(const QString &key, const QString &fallback) const;
    // The same with the key's default from the settings table.
    bool boolValue(Setting setting) const;
    qint64 intValue(Setting setting) const;
    double doubleValue(Setting setting) const;
    QString stringValue(Setting setting) const;
    // The stored list, the empty list included; nothing when the key is absent
    // or holds something other than text.
    std::optional<QStringList> stringList(const QString &key) const;

    void setBool(const QString &key, bool value);
    void setInt(const QString &key, qint64 value);
    void setDouble(const QString &key, double value);
    void setString(const QString &key, const QString &value);
    void setStringList(const QString &key, const QStringList &value);
    void remove(const QString &key);
    // Removes every key (tests start from an empty store this way).
    void clear();

    // Logs once when the settings cannot be saved (say, the folder is not
    // writable): Narv then runs on what it reads, and changes last until it quits.
    // Returns whether the file can be written.
    bool checkWritable();

    // Re-reads the file if another process changed it and reports what changed.
    // Runs by itself when the file watcher fires; public so callers can force it.
    void reload();

Q_SIGNALS:
    void changed(const QString &key);

private:
    void write(const QString &key, const QVariant &value);
    void flush();
    void reportWriteError();
    void watch();
    QHash<QString, QString> snapshot() const;

    mutable QSettings m_settings;
    QFileSystemWatcher m_watcher;
    QHash<QString, QString> m_snapshot; // key -> comparable form of the stored value
    bool m_reportedWriteError = false;
};
