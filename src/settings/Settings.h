#pragma once

#include <QString>

#include <iterator>
#include <optional>

// Every key of the settings file, declared once: the table below gives each
// its name in the file, its type, its default, its unit and what a change of
// it does beyond being stored. The settings objects (PrefState,
// PrefStyleState, PrefWaterState) and the views read their keys and defaults
// from here. The names are the users' existing files: never respell one, the
// odd ones ("weakup", "lastShowDate") included.
enum class Setting {
    workTime,
    breakTime,
    shortBreakTimes,
    longBreakTime,
    forceLongBreak,
    customBreakPrompt,
    breakPrompt,
    breakStyle,
    breakPromptList,
    newDayBreakPromptList,
    showTime,
    restartTimerAfterAwake,
    stopTimerAfterMouseStop,
    showNewDayTip,
    lastWeakupTimestamp,
    launchAtLogin,
    autoCheckUpdate,
    lastUpdateCheck,
    waterEnable,
    waterTarget,
    waterMode,
    waterIntervalStart,
    waterIntervalEnd,
    waterSelectedInterval,
    waterFinished,
    waterLastSelectedAmount,
    waterLastShowDate,
    keepHistory,
    historyKeepDays,
    headsUpSeconds,
    postponeMinutes,
    postponeLimit,
    pauseForEnable,
    deferWhenBusy,
    breakSounds,
};

enum class SettingType { boolean, integer, number, text, textList };

struct SettingEntry {
    Setting setting;
    // The key in the file. For a list kept per break style, the start of the
    // key, which ends in the style's number ("break_prompt_list_1").
    const char *key;
    SettingType type;
    // The default of a boolean (0 or 1), a number or a whole number. For the
    // working hours the time of day, in seconds after midnight, of today.
    double byDefault;
    // The default of a text; null where it is worked out when read (the
    // style's built-in texts for a list).
    const char *textByDefault;
    const char *unit;   // "" when it has none
    const char *effect; // what a change does besides being stored; "" for nothing
};

// Moments are kept as seconds since 1970-01-01 00:00:00 UTC: as text for the
// water hours and the update check, as a number for the others.
inline constexpr SettingEntry settingsTable[] = {
    {Setting::workTime, "pref.work.time", SettingType::integer, 25, nullptr, "minutes",
     "restarts the work period unless the user paused"},
    {Setting::breakTime, "pref.break.time", SettingType::integer, 300, nullptr, "seconds",
     "the next short break"},
    {Setting::shortBreakTimes, "pref.short.break.times", SettingType::integer, 4, nullptr, "breaks",
     "every this many breaks, one is long"},
    {Setting::longBreakTime, "pref.long.break.time", SettingType::integer, 15, nullptr, "minutes",
     "the next long break"},
    {Setting::forceLongBreak, "force_long_break", SettingType::boolean, 0, nullptr, "",
     "long breaks show no Skip"},
    {Setting::customBreakPrompt, "custom_break_prompt", SettingType::boolean, 0, nullptr, "",
     "breaks show breakPrompt instead of the style's texts"},
    {Setting::breakPrompt, "break_prompt_text", SettingType::text, 0,
     "堂堂七尺少年郎, 躺上一躺又何妨", "", "the next break's text"},
    {Setting::breakStyle, "break_style", SettingType::integer, 0, nullptr, "",
     "the texts of the next break and greeting"},
    {Setting::breakPromptList, "break_prompt_list_", SettingType::textList, 0, nullptr, "",
     "the Style tab's list"},
    {Setting::newDayBreakPromptList, "new_day_break_prompt_list_", SettingType::textList, 0,
     nullptr, "", "the Style tab's list"},
    {Setting::showTime, "show_time_in_status_bar", SettingType::boolean, 1, nullptr, "",
     "shows or hides the time beside the status icon"},
    {Setting::restartTimerAfterAwake, "restart_timer_after_awake", SettingType::boolean, 1, nullptr,
     "", "a lock stops the cycle, an unlock restarts it"},
    {Setting::stopTimerAfterMouseStop, "stop_timer_after_mouse_stop", SettingType::boolean, 1,
     nullptr, "", "five idle minutes stop the cycle"},
    {Setting::showNewDayTip, "show_new_day_tip", SettingType::boolean, 0, nullptr, "",
     "the first unlock of a day greets"},
    {Setting::lastWeakupTimestamp, "last_weakup_timestamp", SettingType::number, 0, nullptr,
     "seconds since 1970", "when the screen last locked"},
    {Setting::launchAtLogin, "launch_at_login", SettingType::boolean, 0, nullptr, "",
     "registers or unregisters the login item"},
    {Setting::autoCheckUpdate, "auto_check_update", SettingType::boolean, 1, nullptr, "",
     "checks for a new release every 12 hours"},
    {Setting::lastUpdateCheck, "last_update_check", SettingType::text, 0, nullptr,
     "seconds since 1970", "when the next automatic check is due"},
    {Setting::waterEnable, "pref.water.enable", SettingType::boolean, 0, nullptr, "",
     "the water item and reminder come or go (from the Water tab)"},
    {Setting::waterTarget, "pref.water.target", SettingType::integer, 1500, nullptr, "ml",
     "the water item's per cent"},
    {Setting::waterMode, "pref.water.mode", SettingType::integer, 0, nullptr, "",
     "0 every interval, the only mode offered"},
    {Setting::waterIntervalStart, "pref.water.interval.start", SettingType::text, 7 * 3600, nullptr,
     "seconds since 1970", "re-arms or disarms the reminder (from the Water tab)"},
    {Setting::waterIntervalEnd, "pref.water.interval.end", SettingType::text, 20 * 3600, nullptr,
     "seconds since 1970", "re-arms or disarms the reminder (from the Water tab)"},
    {Setting::waterSelectedInterval, "pref.water.selectedInterval", SettingType::integer, 15,
     nullptr, "minutes", "the next reminder's distance"},
    {Setting::waterFinished, "pref.water.finished", SettingType::integer, 0, nullptr, "ml",
     "the water item's per cent"},
    {Setting::waterLastSelectedAmount, "pref.water.lastSelectedAmount", SettingType::integer, 150,
     nullptr, "ml", "what Done adds"},
    {Setting::waterLastShowDate, "pref.water.lastShowDate", SettingType::number, 0, nullptr,
     "seconds since 1970", "the start of the current interval and the tally's day"},
    {Setting::keepHistory, "pref.history.enable", SettingType::boolean, 0, nullptr, "",
     "History... comes or goes in the menu; recording starts or stops"},
    {Setting::historyKeepDays, "pref.history.keep.days", SettingType::integer, 365, nullptr, "days",
     "older history goes at the next start"},
    {Setting::headsUpSeconds, "pref.heads.up.seconds", SettingType::integer, 0, nullptr, "seconds",
     "a notification this long before each break; 0 off, else 10, 30 or 60"},
    {Setting::postponeMinutes, "pref.postpone.minutes", SettingType::integer, 0, nullptr, "minutes",
     "the break screen offers Postpone; 0 off, else 1, 5 or 10"},
    {Setting::postponeLimit, "pref.postpone.limit", SettingType::integer, 1, nullptr, "times",
     "postpones in a row before a break is taken, 1 to 3"},
    {Setting::pauseForEnable, "pref.pause.for.enable", SettingType::boolean, 0, nullptr, "",
     "the menu offers to pause for 30 minutes, an hour or until tomorrow"},
    {Setting::deferWhenBusy, "pref.defer.when.busy", SettingType::boolean, 0, nullptr, "",
     "a break waits, 30 minutes at most, while a call or a full-screen window goes on"},
    {Setting::breakSounds, "pref.break.sounds", SettingType::boolean, 0, nullptr, "",
     "a sound as each break starts and ends"},
};

namespace Settings {
constexpr const SettingEntry &entry(Setting setting)
{
    return settingsTable[int(setting)];
}
constexpr const char *keyName(Setting setting)
{
    return entry(setting).key;
}
inline QString key(Setting setting)
{
    return QString::fromLatin1(keyName(setting));
}
// The setting stored under this key (a per-style list's key included).
std::optional<Setting> fromKey(const QString &key);
} // namespace Settings

// The table is indexed by the enum: its rows must stay in the enum's order.
constexpr bool settingsTableInOrder()
{
    for (int i = 0; i < int(std::size(settingsTable)); ++i) {
        if (int(settingsTable[i].setting) != i)
            return false;
    }
    return true;
}
static_assert(settingsTableInOrder(), "settingsTable rows must follow the order of Setting");
static_assert(std::size(settingsTable) == int(Setting::breakSounds) + 1,
              "every Setting needs its row in settingsTable");
