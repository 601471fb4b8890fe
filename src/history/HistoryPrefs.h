#pragma once

#include <QObject>

class PreferencesStore;

// The history's two settings, in the settings file beside the others. With
// them as they come (off), Narv records nothing and opens no database.
class HistoryPrefs : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool keepHistory READ keepHistory WRITE setKeepHistory NOTIFY keepHistoryChanged)
    Q_PROPERTY(qint64 keepDays READ keepDays WRITE setKeepDays NOTIFY keepDaysChanged)
public:
    static constexpr qint64 maxKeepDays = 3650;

    explicit HistoryPrefs(PreferencesStore &store, QObject *parent = nullptr);
    // On the process's own settings store.
    static HistoryPrefs *instance();

    bool keepHistory() const;
    void setKeepHistory(bool value);
    // Days of history kept; older rows go when the history is opened. A value
    // outside 1 to maxKeepDays reads as the default, said in the log.
    qint64 keepDays() const;
    void setKeepDays(qint64 value);

Q_SIGNALS:
    void keepHistoryChanged();
    void keepDaysChanged();

private:
    PreferencesStore &m_store;
};
