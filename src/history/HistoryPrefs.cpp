#include "history/HistoryPrefs.h"

#include "app/Log.h"
#include "settings/PreferencesStore.h"

HistoryPrefs::HistoryPrefs(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store)
{
    connect(&m_store, &PreferencesStore::changed, this, [this](const QString &key) {
        if (key == QLatin1String(keepHistoryKey))
            Q_EMIT keepHistoryChanged();
        else if (key == QLatin1String(keepDaysKey))
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
    return m_store.boolValue(QLatin1String(keepHistoryKey), false);
}

void HistoryPrefs::setKeepHistory(bool value)
{
    m_store.setBool(QLatin1String(keepHistoryKey), value);
}

qint64 HistoryPrefs::keepDays() const
{
    const qint64 days = m_store.intValue(QLatin1String(keepDaysKey), defaultKeepDays);
    if (days >= 1 && days <= maxKeepDays)
        return days;
    LOG_WARNING(QStringLiteral("settings: \"%1\" holds %2, outside 1 to %3 days; reading it as %4")
                    .arg(QLatin1String(keepDaysKey))
                    .arg(days)
                    .arg(maxKeepDays)
                    .arg(defaultKeepDays));
    return defaultKeepDays;
}

void HistoryPrefs::setKeepDays(qint64 value)
{
    m_store.setInt(QLatin1String(keepDaysKey), value);
}
