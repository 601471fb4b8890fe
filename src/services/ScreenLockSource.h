#pragma once

#include <QObject>

// Where a screen lock comes from. The desktop's own signals are merged behind
// this: one lock gives one locked(), one unlock one unlocked(), whichever
// services report it and however often.
class ScreenLockSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Begins listening. Reports why in the log when the session has nothing to
    // listen to; the program then simply never sees a lock.
    virtual void start() = 0;

Q_SIGNALS:
    void locked();
    void unlocked();
};
