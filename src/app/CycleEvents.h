#pragma once

#include <QObject>

// Tells those outside the core that the work cycle changed course: a
// countdown started or stopped (work, break, pause, a stop on a lock or
// idleness). Never for the seconds in between.
class CycleEvents : public QObject {
    Q_OBJECT
public:
    static CycleEvents *instance();

    enum class BreakKind { Short, Long, Greeting };
    Q_ENUM(BreakKind)

Q_SIGNALS:
    // A break is about to start its countdown (changed() follows).
    void breakStarted(CycleEvents::BreakKind kind);
    // May come several times for one change (a countdown replacing another
    // stops the old one first): listeners coalesce.
    void changed();

private:
    using QObject::QObject;
};
