#include "preferences/PrefStyleModel.h"

#include "settings/BreakStyle.h"
#include "settings/PrefStyleState.h"
#include "settings/PreferencesStore.h"

PrefStyleModel::PrefStyleModel(QObject *parent) : QObject(parent)
{
    // The lists have no change signal of their own; an edit of the settings
    // file by hand still shows at once.
    connect(&PreferencesStore::instance(), &PreferencesStore::changed, this,
            &PrefStyleModel::onStoreChanged);
}

void PrefStyleModel::setStyleState(PrefStyleState *state)
{
    if (m_styleState == state)
        return;
    if (m_styleState)
        disconnect(m_styleState, nullptr, this, nullptr);
    m_styleState = state;
    if (m_styleState) {
        connect(m_styleState, &PrefStyleState::breakStyleChanged, this,
                &PrefStyleModel::syncPromptList);
        connect(m_styleState, &PrefStyleState::breakStyleChanged, this,
                &PrefStyleModel::breakStyleChanged);
    }
    syncPromptList();
    Q_EMIT styleStateChanged();
    Q_EMIT breakStyleChanged();
}

int PrefStyleModel::breakStyle() const
{
    return m_styleState ? int(m_styleState->breakStyleRaw()) : 0;
}

void PrefStyleModel::setBreakStyle(int raw)
{
    if (m_styleState)
        m_styleState->setBreakStyleRaw(raw);
}

void PrefStyleModel::setPromptSelectIdx(int index)
{
    if (m_promptSelectIdx == index)
        return;
    m_promptSelectIdx = index;
    syncPromptList();
    Q_EMIT promptSelectIdxChanged();
}

void PrefStyleModel::setEditText(const QVariant &text)
{
    // Anything but a string (null, undefined) closes the editor.
    const QVariant value = text.typeId() == QMetaType::QString ? text : QVariant();
    if (value.isValid() == m_editText.isValid() && value.toString() == m_editText.toString())
        return;
    m_editText = value;
    Q_EMIT editTextChanged();
}

QStringList PrefStyleModel::styleNames()
{
    QStringList names;
    for (BreakStyle style : BreakStyles::all())
        names << BreakStyles::desc(style);
    return names;
}

void PrefStyleModel::setPromptList(const QStringList &list)
{
    if (m_promptList == list)
        return;
    m_promptList = list;
    Q_EMIT promptListChanged();
}

void PrefStyleModel::onStoreChanged(const QString &key)
{
    if (m_styleState &&
        (key == m_styleState->promptListKey() || key == m_styleState->newDayPromptListKey()))
        syncPromptList();
}

void PrefStyleModel::syncPromptList()
{
    if (!m_styleState)
        return;
    setPromptList(m_promptSelectIdx != 0 ? m_styleState->newDayPromptList()
                                         : m_styleState->promptList());
}

void PrefStyleModel::update(const QStringList &list)
{
    if (!m_styleState)
        return;
    if (m_promptSelectIdx != 0)
        m_styleState->setNewDayPromptList(list);
    else
        m_styleState->setPromptList(list);
}

void PrefStyleModel::addNewPrompt()
{
    setEditText(QStringLiteral(""));
}

void PrefStyleModel::edit(const QString &prompt)
{
    setEditText(prompt);
}

void PrefStyleModel::trash(const QString &prompt)
{
    QStringList list = m_promptList;
    list.removeAll(prompt);
    setPromptList(list);
    update(list);
}

void PrefStyleModel::commit(const QString &from, const QString &to)
{
    if (to.isEmpty())
        return;
    QStringList list = m_promptList;
    const qsizetype index = list.indexOf(from);
    if (index < 0) {
        list.insert(0, to);
    } else {
        list.removeAt(index);
        list.insert(index, to);
    }
    setPromptList(list);
    update(list);
}

void PrefStyleModel::resetPromptList()
{
    if (!m_styleState)
        return;
    const BreakStyle style = m_styleState->breakStyle();
    const QStringList list =
        m_promptSelectIdx != 0 ? BreakStyles::newDayPrompts(style) : BreakStyles::prompts(style);
    setPromptList(list);
    update(list);
}
