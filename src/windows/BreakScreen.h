#pragma once

#include "app/TicktackState.h"
#include "settings/PromptState.h"

#include <QObject>
#include <QtQml/qqml.h>

class QJSEngine;
class QQmlEngine;

// The core's shared states as QML types. There is one of each, owned by
// AppState; QML only ever gets them from BreakScreen.
struct PromptStateForeign {
    Q_GADGET
    QML_FOREIGN(PromptState)
    QML_NAMED_ELEMENT(PromptState)
    QML_UNCREATABLE("the prompt state is AppState::promptState()")
};

struct TicktackStateForeign {
    Q_GADGET
    QML_FOREIGN(TicktackState)
    QML_NAMED_ELEMENT(TicktackState)
    QML_UNCREATABLE("countdown states belong to AppState")
};

// What every BreakView works with: the prompt and the break countdown that all
// break windows share, and the two ways a break ends from the screen.
class BreakScreen : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(PromptState *promptState READ promptState CONSTANT)
    Q_PROPERTY(TicktackState *breakState READ breakState CONSTANT)
public:
    static BreakScreen *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine);

    PromptState *promptState() const;
    TicktackState *breakState() const;

    // "Skip", and the end of the break countdown: closes the break windows and
    // resumes work unless paused. Every break view runs it when the countdown
    // ends, so with two screens it runs twice in a row; closePrompt() is made
    // for that.
    Q_INVOKABLE void skipAction();
    // A click on the water reminder's promotion: ends the break and opens the
    // preferences so the reminder can be switched on.
    Q_INVOKABLE void openWaterReminder();
    // "Postpone": the break goes away and comes again a few minutes later.
    Q_INVOKABLE void postponeAction();

private:
    using QObject::QObject;
};
