#include "history/HistorySettings.h"

#include "history/HistoryPrefs.h"
#include "windows/WindowController.h"

HistorySettings::HistorySettings(QObject *parent) : QObject(parent)
{
    HistoryPrefs *prefs = HistoryPrefs::instance();
    connect(prefs, &HistoryPrefs::keepHistoryChanged, this, &HistorySettings::keepHistoryChanged);
    connect(prefs, &HistoryPrefs::keepDaysChanged, this, &HistorySettings::keepDaysChanged);
}

bool HistorySettings::keepHistory() const
{
    return HistoryPrefs::instance()->keepHistory();
}

void HistorySettings::setKeepHistory(bool value)
{
    HistoryPrefs::instance()->setKeepHistory(value);
}

qint64 HistorySettings::keepDays() const
{
    return HistoryPrefs::instance()->keepDays();
}

void HistorySettings::setKeepDays(qint64 value)
{
    HistoryPrefs::instance()->setKeepDays(value);
}

int HistorySettings::maxKeepDays()
{
    return int(HistoryPrefs::maxKeepDays);
}

void HistorySettings::openHistory()
{
    WindowController::showHistory();
}
