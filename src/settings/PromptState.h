#pragma once

#include <QObject>
#include <QString>

// What the break screen shows (the prompt, whether "Skip" is offered) and the
// count of breaks that makes every N-th one long. Both published setters notify
// on every assignment, also of an unchanged value.
class PromptState : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString prompt READ prompt WRITE setPrompt NOTIFY promptChanged)
    Q_PROPERTY(bool showSkipButton READ showSkipButton WRITE setShowSkipButton NOTIFY
                   showSkipButtonChanged)
    // Notifies only when it changes: with postponing off it stays false.
    Q_PROPERTY(bool showPostponeButton READ showPostponeButton WRITE setShowPostponeButton NOTIFY
                   showPostponeButtonChanged)
public:
    // Shown on a new day when the style offers no greeting of its own.
    static QString fallbackNewDayGreeting();

    explicit PromptState(const QString &initialPrompt, QObject *parent = nullptr);

    QString prompt() const { return m_prompt; }
    void setPrompt(const QString &value);
    bool showSkipButton() const { return m_showSkipButton; }
    void setShowSkipButton(bool value);
    bool showPostponeButton() const { return m_showPostponeButton; }
    void setShowPostponeButton(bool value);
    // Breaks since the last long one; 0 right after a long break.
    qint64 shortBreakTimes() const { return m_shortBreakTimes; }
    // Whether the break on the screen, or else the coming one, may be
    // postponed now: postponing is on, it is not a long break with
    // force_long_break or the greeting, and the postpones in a row are not
    // used up. Postpones in a row start again when work is assigned.
    bool canPostpone() const;
    // Whether the coming break could be skipped (not a forced long break).
    bool canSkipComing() const;
    // The last break ended by a postpone (until the next one starts).
    bool postponed() const { return m_postponed; }

    // Counts the break and starts it: short (breakTime seconds, skippable) or,
    // every shortBreakTimes-th time, long (longBreakTime minutes).
    Q_INVOKABLE void showBreak();
    // The ten-second greeting on the first unlock of a day; not counted, never skippable.
    Q_INVOKABLE void showNewDay();
    // Ends the break and resumes work unless the user paused.
    Q_INVOKABLE void closePrompt();
    Q_INVOKABLE void resetShortBreakTimes();
    // Moves the break on the screen (its windows close, uncounted) or else
    // the coming one the postpone setting's minutes later. Refused, with a
    // log line, when canPostpone() is false.
    Q_INVOKABLE void postpone();
    // Counts the coming break as taken and starts a full work period, as if
    // it had been shown and skipped. Refused when canSkipComing() is false.
    void skipComing();

Q_SIGNALS:
    void promptChanged();
    void showSkipButtonChanged();
    void showPostponeButtonChanged();

private:
    bool nextIsLong() const;
    bool mayPostpone(bool breakOnScreen) const;

    QString m_prompt;
    bool m_showSkipButton = false;
    bool m_showPostponeButton = false;
    qint64 m_shortBreakTimes = 0;
    qint64 m_countBefore = 0; // the counter before the break on the screen was counted
    bool m_long = false;      // the break on the screen is long
    bool m_greeting = false;  // ... is the new-day greeting
    bool m_postponed = false;
    int m_postponedInRow = 0;
};
