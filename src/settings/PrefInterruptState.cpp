#include "settings/PrefInterruptState.h"

#include "app/Log.h"
#include "settings/PreferencesStore.h"
#include "settings/Settings.h"

#include <initializer_list>

namespace {
// The stored number when it is one of `choices`, else 0 (off), said in the log.
int oneOf(const PreferencesStore &store, Setting setting, std::initializer_list<int> choices)
{
    const qint64 value = store.intValue(setting);
    for (int choice : choices) {
        if (value == choice)
            return choice;
    }
    QStringList names;
    for (int choice : choices)
        names << QString::number(choice);
    LOG_WARNING(QStringLiteral("settings: \"%1\" holds %2, not one of %3; reading it as off")
                    .arg(Settings::key(setting))
                    .arg(value)
                    .arg(names.join(QStringLiteral(", "))));
    return 0;
}

bool isOurs(const QString &key)
{
    const std::optional<Setting> setting = Settings::fromKey(key);
    return setting && *setting >= Setting::headsUpSeconds && *setting <= Setting::breakSounds;
}
} // namespace

PrefInterruptState::PrefInterruptState(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store)
{
    read();
    connect(&m_store, &PreferencesStore::changed, this, [this](const QString &key) {
        if (isOurs(key)) {
            read();
            Q_EMIT changed();
        }
    });
}

PrefInterruptState *PrefInterruptState::instance()
{
    static PrefInterruptState *state = new PrefInterruptState(PreferencesStore::instance());
    return state;
}

void PrefInterruptState::read()
{
    m_headsUpSeconds = oneOf(m_store, Setting::headsUpSeconds, {0, 10, 30, 60});
    m_postponeMinutes = oneOf(m_store, Setting::postponeMinutes, {0, 1, 5, 10});
    m_postponeLimit = oneOf(m_store, Setting::postponeLimit, {1, 2, 3});
    m_pauseForEnable = m_store.boolValue(Setting::pauseForEnable);
    m_deferWhenBusy = m_store.boolValue(Setting::deferWhenBusy);
    m_breakSounds = m_store.boolValue(Setting::breakSounds);
}

void PrefInterruptState::setHeadsUpSeconds(int value)
{
    m_store.setInt(Settings::key(Setting::headsUpSeconds), value);
}

void PrefInterruptState::setPostponeMinutes(int value)
{
    m_store.setInt(Settings::key(Setting::postponeMinutes), value);
}

void PrefInterruptState::setPostponeLimit(int value)
{
    m_store.setInt(Settings::key(Setting::postponeLimit), value);
}

void PrefInterruptState::setPauseForEnable(bool value)
{
    m_store.setBool(Settings::key(Setting::pauseForEnable), value);
}

void PrefInterruptState::setDeferWhenBusy(bool value)
{
    m_store.setBool(Settings::key(Setting::deferWhenBusy), value);
}

void PrefInterruptState::setBreakSounds(bool value)
{
    m_store.setBool(Settings::key(Setting::breakSounds), value);
}
