#pragma once

#include <QObject>

// Tells those outside the core that the work cycle changed course: a
// countdown started or stopped (work, break, pause, a stop on a lock or
// idleness), the break windows are wanted or done with, the water reminder
// changed or is due. Never for the seconds in between. The status bar and the window
// controller listen here; the core knows neither.
class CycleEvents : public QObject {
    Q_OBJECT
public:
    static CycleEvents *instance();

    enum class BreakKind { Short, Long, Greeting };
    Q_ENUM(BreakKind)

Q_SIGNALS:
    // May come several times for one change (a countdown replacing another
    // stops the old one first): listeners coalesce.
    void changed();
    // AppState::working was assigned (also with its old value), after the
    // countdown was started or stopped.
    void workingAssigned(bool working);
    // A break (or the new-day greeting) begins: its windows come up before
    // its prompt and countdown are published.
    void breakStarted(CycleEvents::BreakKind kind);
    // The break windows go: the break was ended or skipped, or the screen locked.
    void breakEnded();
    // The water reminder's interval is over: the water panel opens.
    void waterDue();
    // A water setting changed (the tally, the working hours ...), in this
    // process or in the file.
    void waterChanged();
    // An unlock started the water reminder's day afresh: a panel still open
    // shows yesterday's tally and closes.
    void waterDayRestarted();

private:
    using QObject::QObject;
};
