#pragma once

#include "settings/BreakStyle.h"
#include "settings/Settings.h"

#include <QObject>
#include <QStringList>

class PreferencesStore;

// The chosen break style and, per style, the user's editable prompt lists.
// The lists are what the Style tab shows and edits; breaks themselves draw from
// the built-in texts of the style.
class PrefStyleState : public QObject {
    Q_OBJECT
    Q_PROPERTY(qint64 breakStyle READ breakStyleRaw WRITE setBreakStyleRaw NOTIFY breakStyleChanged)
public:
    static constexpr const char *breakStyleKey = Settings::keyName(Setting::breakStyle);
    static constexpr const char *promptListPrefix = Settings::keyName(Setting::breakPromptList);
    static constexpr const char *newDayPromptListPrefix =
        Settings::keyName(Setting::newDayBreakPromptList);

    explicit PrefStyleState(PreferencesStore &store, QObject *parent = nullptr);

    // A stored number outside 0..2, or none, reads as the default style.
    BreakStyle breakStyle() const;
    void setBreakStyle(BreakStyle style);
    qint64 breakStyleRaw() const { return BreakStyles::rawValue(breakStyle()); }
    void setBreakStyleRaw(qint64 raw);

    // The current style's stored list (the empty list included), else its built-in texts.
    Q_INVOKABLE QStringList promptList() const;
    Q_INVOKABLE void setPromptList(const QStringList &list);
    Q_INVOKABLE QStringList newDayPromptList() const;
    Q_INVOKABLE void setNewDayPromptList(const QStringList &list);

    // The key a list of the current style is stored under: the prefix and the style's number.
    QString promptListKey() const;
    QString newDayPromptListKey() const;

Q_SIGNALS:
    void breakStyleChanged();

private:
    PreferencesStore &m_store;
};
