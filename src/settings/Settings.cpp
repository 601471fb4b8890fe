#include "settings/Settings.h"

std::optional<Setting> Settings::fromKey(const QString &key)
{
    for (const SettingEntry &row : settingsTable) {
        const QLatin1String name(row.key);
        if (row.type == SettingType::textList ? key.startsWith(name) : key == name)
            return row.setting;
    }
    return std::nullopt;
}
