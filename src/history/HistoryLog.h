#pragma once

#include <QDate>
#include <QString>

#include <functional>

class QIODevice;

// One row of the history, as it happened.
struct HistoryEvent {
    // "work" (the work countdown ran), "break", "pause" or "drink"; or
    // "target": the water target (ml) of the day `started` falls on, kept
    // with the day rather than as a row
    QString kind;
    qint64 started = 0; // seconds since 1970-01-01 UTC
    qint64 seconds = 0; // how long it lasted; 0 for a drink
    qint64 planned = 0; // seconds a break was to last; 0 otherwise
    // a break's kind ("short", "long", "greeting") or a pause's cause
    // ("manual", "lock", "idle")
    QString detail;
    // how a break ended: "countdown", "skip", "pause", "lock", "quit", "postponed"
    QString ended;
    qint64 ml = 0; // a drink's amount
};

// Where the counting process hands its rows. Writing happens on a thread of
// its own: record() only queues, so the countdown never waits for the disk.
class HistoryLog {
public:
    virtual ~HistoryLog() = default;
    virtual void record(const HistoryEvent &event) = 0;
};

// The store needs Qt SQL, which the counting process does not link (see
// app/Module.h): it is in the module narv_history.so, loaded when the history
// is switched on or exported.
namespace HistoryModule {
inline constexpr const char *fileName = "narv_history.so";
// HistoryLog *(const QString &path, qint64 keepDays, const HistoryReport &report):
// a log writing to the file at `path`, owned by the caller. `report` is called
// on the caller's thread with each problem, at most once per kind.
inline constexpr const char *openEntry = "narv_history_open";
// bool (const QString &path, const QDate &since, QIODevice *out, QString *error)
inline constexpr const char *exportEntry = "narv_history_export_csv";

using Report = std::function<void(const QString &problem)>;
using Open = HistoryLog *(*)(const QString &path, qint64 keepDays, const Report &report);
using Export = bool (*)(const QString &path, const QDate &since, QIODevice *out, QString *error);

// $XDG_DATA_HOME/narv/history.sqlite
QString filePath();
} // namespace HistoryModule
