#include "settings/PrefStyleState.h"

#include "app/Log.h"
#include "settings/PreferencesStore.h"

PrefStyleState::PrefStyleState(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store)
{
    connect(&m_store, &PreferencesStore::changed, this, [this](const QString &key) {
        if (key == QLatin1String(breakStyleKey))
            Q_EMIT breakStyleChanged();
    });
}

BreakStyle PrefStyleState::breakStyle() const
{
    const qint64 raw = m_store.intValue(Setting::breakStyle);
    return BreakStyles::fromRawValue(raw).value_or(BreakStyle::default_);
}

void PrefStyleState::setBreakStyle(BreakStyle style)
{
    m_store.setInt(QString::fromLatin1(breakStyleKey), BreakStyles::rawValue(style));
}

void PrefStyleState::setBreakStyleRaw(qint64 raw)
{
    const auto style = BreakStyles::fromRawValue(raw);
    if (!style) {
        LOG_WARNING(QStringLiteral("there is no break style %1; keeping the current one").arg(raw));
        return;
    }
    setBreakStyle(*style);
}

QString PrefStyleState::promptListKey() const
{
    return QString::fromLatin1(promptListPrefix) + QString::number(breakStyleRaw());
}

QString PrefStyleState::newDayPromptListKey() const
{
    return QString::fromLatin1(newDayPromptListPrefix) + QString::number(breakStyleRaw());
}

QStringList PrefStyleState::promptList() const
{
    return m_store.stringList(promptListKey()).value_or(BreakStyles::prompts(breakStyle()));
}

void PrefStyleState::setPromptList(const QStringList &list)
{
    m_store.setStringList(promptListKey(), list);
}

QStringList PrefStyleState::newDayPromptList() const
{
    return m_store.stringList(newDayPromptListKey())
        .value_or(BreakStyles::newDayPrompts(breakStyle()));
}

void PrefStyleState::setNewDayPromptList(const QStringList &list)
{
    m_store.setStringList(newDayPromptListKey(), list);
}
