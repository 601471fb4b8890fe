#include "preferences/PrefWaterModel.h"

#include "app/Log.h"
#include "settings/PrefWaterState.h"
#include "windows/CountdownCommand.h"
#include "windows/WindowController.h"

PrefWaterModel::PrefWaterModel(QObject *parent) : QObject(parent)
{
}

void PrefWaterModel::setWaterState(PrefWaterState *state)
{
    if (m_waterState == state)
        return;
    if (m_waterState)
        disconnect(m_waterState, nullptr, this, nullptr);
    m_waterState = state;
    if (m_waterState) {
        connect(m_waterState, &PrefWaterState::enableChanged, this,
                &PrefWaterModel::onEnableChanged);
        connect(m_waterState, &PrefWaterState::intervalStartDateChanged, this,
                &PrefWaterModel::onHoursChanged);
        connect(m_waterState, &PrefWaterState::intervalEndDateChanged, this,
                &PrefWaterModel::onHoursChanged);
        connect(m_waterState, &PrefWaterState::modeChanged, this, &PrefWaterModel::modeChanged);
        connect(m_waterState, &PrefWaterState::selectedIntervalChanged, this,
                &PrefWaterModel::selectedIntervalChanged);
    }
    remember();
    Q_EMIT waterStateChanged();
    Q_EMIT modeChanged();
    Q_EMIT selectedIntervalChanged();
}

int PrefWaterModel::selectedInterval() const
{
    return m_waterState ? int(m_waterState->selectedInterval()) : 0;
}

void PrefWaterModel::setSelectedInterval(int minutes)
{
    // Only stored: the reminder already armed keeps its time.
    if (m_waterState)
        m_waterState->setSelectedInterval(minutes);
}

void PrefWaterModel::setActive(bool active)
{
    if (m_active == active)
        return;
    m_active = active;
    // What changed while the tab was away is not the tab's doing.
    remember();
    Q_EMIT activeChanged();
}

void PrefWaterModel::remember()
{
    if (!m_waterState)
        return;
    m_enable = m_waterState->enable();
    m_start = m_waterState->intervalStartDate();
    m_end = m_waterState->intervalEndDate();
}

QStringList PrefWaterModel::modeNames()
{
    QStringList names;
    for (PrefWaterState::Mode mode : PrefWaterState::allModes())
        names << PrefWaterState::modeDesc(mode);
    return names;
}

int PrefWaterModel::modeIndex() const
{
    return m_waterState ? int(PrefWaterState::allModes().indexOf(m_waterState->mode())) : -1;
}

void PrefWaterModel::setModeIndex(int index)
{
    const QList<PrefWaterState::Mode> modes = PrefWaterState::allModes();
    if (!m_waterState || index < 0 || index >= modes.size())
        return;
    m_waterState->setMode(modes.at(index));
}

QString PrefWaterModel::modeTip() const
{
    return m_waterState ? PrefWaterState::modeTip(m_waterState->mode()) : QString();
}

QVariantList PrefWaterModel::intervalValues() const
{
    QVariantList values;
    if (m_waterState) {
        for (int value : PrefWaterState::modeValues(m_waterState->mode()))
            values << value;
    }
    return values;
}

QDateTime PrefWaterModel::withTime(const QDateTime &date, int hour, int minute)
{
    const QDateTime local = date.toLocalTime();
    return QDateTime(local.date(), QTime(hour, minute));
}

void PrefWaterModel::onEnableChanged()
{
    if (!m_waterState || !m_active)
        return;
    const bool enable = m_waterState->enable();
    if (enable == m_enable)
        return;
    m_enable = enable;
    if (enable) {
        CountdownCommands::send(CountdownCommand::showWaterItem);
        CountdownCommands::send(CountdownCommand::scheduleWater);
    } else {
        CountdownCommands::send(CountdownCommand::hideWaterItem);
        WindowController::closeWaterView();
        CountdownCommands::send(CountdownCommand::cancelWater);
    }
}

void PrefWaterModel::onHoursChanged()
{
    if (!m_waterState || !m_active)
        return;
    const QDateTime start = m_waterState->intervalStartDate();
    const QDateTime end = m_waterState->intervalEndDate();
    if (start == m_start && end == m_end)
        return;
    m_start = start;
    m_end = end;
    updateSchedule();
}

void PrefWaterModel::updateSchedule()
{
    if (!m_waterState)
        return;
    if (!m_waterState->enable()) {
        logger().log(LogLevel::Info, QStringLiteral("waterState.enable is false"), {},
                     LogSource{"PrefWaterView", "updateSchedule()", 129});
        return;
    }
    // The status menu's water item follows the hours by itself.
    CountdownCommands::send(m_waterState->inWorkTime() ? CountdownCommand::scheduleWater
                                                       : CountdownCommand::cancelWater);
}
