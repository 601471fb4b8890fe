#pragma once

#include "history/HistoryLog.h"

#include <QObject>
#include <QThread>

class HistoryStore;

// A HistoryLog that writes on a thread of its own. The thread sleeps in its
// event loop between rows: no timer, no wake-up but the rows themselves.
// Each kind of problem is reported once; after one, rows are dropped.
class HistoryWriter : public HistoryLog {
public:
    HistoryWriter(const QString &path, qint64 keepDays, const HistoryModule::Report &report);
    // Writes what is queued, then ends the thread.
    ~HistoryWriter() override;

    void record(const HistoryEvent &event) override;

private:
    // Runs on the writer's thread.
    void say(const QString &problem);

    QThread m_thread;
    QObject *m_context;              // lives on m_thread
    HistoryStore *m_store = nullptr; // used on m_thread only
    bool m_broken = false;           // m_thread only
    HistoryModule::Report m_report;
    QObject *m_reportContext; // the creator's thread
};
