#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

class PrefStyleState;

// What the Style tab works on: a copy of one stored prompt list (the break
// prompts or the new-day prompts of the chosen style) and the rules by which
// an edit changes it. Every change writes the whole list back at once.
class PrefStyleModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        PrefStyleState *styleState READ styleState WRITE setStyleState NOTIFY styleStateChanged)
    // The style's raw value (0 default, 1 relaxation, 2 struggle).
    Q_PROPERTY(int breakStyle READ breakStyle WRITE setBreakStyle NOTIFY breakStyleChanged)
    // 0 shows the break prompts, any other value the new-day prompts.
    Q_PROPERTY(int promptSelectIdx READ promptSelectIdx WRITE setPromptSelectIdx NOTIFY
                   promptSelectIdxChanged)
    Q_PROPERTY(QStringList promptList READ promptList NOTIFY promptListChanged)
    // The prompt in the editor: a string while it is open (empty for a new
    // one), undefined while it is closed.
    Q_PROPERTY(QVariant editText READ editText WRITE setEditText NOTIFY editTextChanged)
    // The styles' names, in the order of their raw values.
    Q_PROPERTY(QStringList styleNames READ styleNames CONSTANT)
public:
    explicit PrefStyleModel(QObject *parent = nullptr);

    PrefStyleState *styleState() const { return m_styleState; }
    void setStyleState(PrefStyleState *state);
    int breakStyle() const;
    void setBreakStyle(int raw);
    int promptSelectIdx() const { return m_promptSelectIdx; }
    void setPromptSelectIdx(int index);
    QStringList promptList() const { return m_promptList; }
    QVariant editText() const { return m_editText; }
    void setEditText(const QVariant &text);
    static QStringList styleNames();

    // Reads the shown list from the settings.
    Q_INVOKABLE void syncPromptList();
    // Opens the editor on an empty prompt.
    Q_INVOKABLE void addNewPrompt();
    // Replaces the shown list with the style's built-in texts.
    Q_INVOKABLE void resetPromptList();
    Q_INVOKABLE void edit(const QString &prompt);
    // Removes every entry equal to the prompt.
    Q_INVOKABLE void trash(const QString &prompt);
    // The editor's OK: `from` is the text the editor was opened with. An empty
    // result changes nothing; an edit keeps its place (the first entry equal
    // to `from`); anything not found goes to the top.
    Q_INVOKABLE void commit(const QString &from, const QString &to);
    // Stores the list as the shown one.
    void update(const QStringList &list);

Q_SIGNALS:
    void styleStateChanged();
    void breakStyleChanged();
    void promptSelectIdxChanged();
    void promptListChanged();
    void editTextChanged();

private:
    void setPromptList(const QStringList &list);
    void onStoreChanged(const QString &key);

    QPointer<PrefStyleState> m_styleState;
    int m_promptSelectIdx = 0;
    QStringList m_promptList;
    QVariant m_editText;
};
