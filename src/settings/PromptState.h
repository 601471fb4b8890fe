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
public:
    // Shown on a new day when the style offers no greeting of its own.
    static QString fallbackNewDayGreeting();

    explicit PromptState(const QString &initialPrompt, QObject *parent = nullptr);

    QString prompt() const { return m_prompt; }
    void setPrompt(const QString &value);
    bool showSkipButton() const { return m_showSkipButton; }
    void setShowSkipButton(bool value);
    // Breaks since the last long one; 0 right after a long break.
    qint64 shortBreakTimes() const { return m_shortBreakTimes; }

    // Counts the break and starts it: short (breakTime seconds, skippable) or,
    // every shortBreakTimes-th time, long (longBreakTime minutes).
    Q_INVOKABLE void showBreak();
    // The ten-second greeting on the first unlock of a day; not counted, never skippable.
    Q_INVOKABLE void showNewDay();
    // Ends the break and resumes work unless the user paused.
    Q_INVOKABLE void closePrompt();
    Q_INVOKABLE void resetShortBreakTimes();

Q_SIGNALS:
    void promptChanged();
    void showSkipButtonChanged();

private:
    QString m_prompt;
    bool m_showSkipButton = false;
    qint64 m_shortBreakTimes = 0;
};
