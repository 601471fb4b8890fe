#include "history/HistoryPrefs.h"

#include "app/Log.h"
#include "settings/PreferencesStore.h"
#include "settings/Settings.h"

HistoryPrefs::HistoryPrefs(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store)
{
    connect(&m_store, &PreferencesStore::changed, this, [this](const QString &key) {
        if (key == Settings::key(Setting::keepHistory))
            Q_EMIT keepHistoryChanged();
        else if (key == Settings::key(Setting::historyKeepDays))
            Q_EMIT keepDaysChanged();
    });
}

HistoryPrefs *HistoryPrefs::instance()
{
    static HistoryPrefs *prefs = new HistoryPrefs(PreferencesStore::instance());
    return prefs;
}

bool HistoryPrefs::keepHistory() const
{
    return m_store.boolValue(Setting::keepHistory);
}

void HistoryPrefs::setKeepHistory(bool value)
{
    m_store.setBool(Settings::key(Setting::keepHistory), value);
}

qint64 HistoryPrefs::keepDays() const
{
    const qint64 defaultKeepDays = qint64(Settings::entry(Setting::historyKeepDays).byDefault);
    const qint64 days = m_store.intValue(Setting::historyKeepDays);
    if (days >= 1 && days <= maxKeepDays)
        return days;
    LOG_WARNING(QStringLiteral("settings: \"%1\" holds %2, outside 1 to %3 days; reading it as %4")
                    .arg(Settings::key(Setting::historyKeepDays))
                    .arg(days)
                    .arg(maxKeepDays)
                    .arg(defaultKeepDays));
    return defaultKeepDays;
}

void HistoryPrefs::setKeepDays(qint64 value)
{
    m_store.setInt(Settings::key(Setting::historyKeepDays), value);
}
