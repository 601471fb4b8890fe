#pragma once

#include "Appcast.h"
#include "FeedFetcher.h"
#include "UpdatePresenter.h"
#include "settings/Settings.h"
#include "windows/WindowController.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>

class PreferencesStore;
class PrefState;

// Checks the appcast for a newer release: every 12 hours while
// autoCheckUpdate is on, and when the user asks. It only tells: the update
// window links to the release notes and the download, nothing is replaced.
//
// The feed is fetched with the system profile as query parameters (appName,
// appVersion, model, osVersion). The time of the last check is kept in the
// settings, so a restart does not check again before 12 hours have passed; a
// first start waits a few minutes, so a login does not begin with a download.
//
// The schedule is kept here, with QtCore alone; what fetches the feed is made
// at the first check (see UpdateModule.h).
class AppcastUpdateChecker : public QObject {
    Q_OBJECT
public:
    static constexpr qint64 checkInterval = 43200; // seconds
    static constexpr qint64 firstCheckDelay = 300; // seconds, when there was never a check
    static constexpr const char *lastCheckKey = Settings::keyName(Setting::lastUpdateCheck);

    // Makes the fetcher at the first check; null when there is none to be had.
    using FetcherFactory = std::function<std::unique_ptr<FeedFetcher>()>;
    // Gives what shows an outcome, when there is one to show; null when there
    // is none to be had. Not owned.
    using PresenterSource = std::function<UpdatePresenter *()>;

    AppcastUpdateChecker(const QUrl &feed, PreferencesStore &store, PrefState &pref,
                         FetcherFactory makeFetcher, QObject *parent = nullptr);
    ~AppcastUpdateChecker() override;

    // The feed address with the system profile added.
    static QUrl profiledUrl(const QUrl &feed);
    // Seconds until the next scheduled check, given the last one (invalid:
    // never) and now. Never negative; a last check in the future (the clock
    // was set back) counts as just now.
    static qint64 secondsUntilNextCheck(const QDateTime &lastCheck, const QDateTime &now);

    // Arms the schedule (and re-arms it whenever autoCheckUpdate changes).
    void start();
    // Shows the outcomes through `source`: a newer release always, the
    // others only when the user asked for the check.
    void showOutcomes(PresenterSource source);
    // The check the menu asks for: every outcome is shown.
    void checkForUpdates();
    // The scheduled check: only a newer release is shown.
    void checkInBackground();

    bool isChecking() const { return m_checking; }
    bool isScheduled() const { return m_timer.isActive(); }
    // Milliseconds until the scheduled check; -1 when none is armed.
    int scheduledInMs() const { return m_timer.isActive() ? m_timer.remainingTime() : -1; }
    QDateTime lastCheck() const;

Q_SIGNALS:
    // `userInitiated`: the user asked, so "up to date" and errors are shown too.
    void updateAvailable(const AppcastItem &item, bool userInitiated);
    void upToDate(bool userInitiated);
    void checkFailed(const QString &reason, bool userInitiated);

private:
    void check(bool userInitiated);
    void onFinished(const QByteArray &body, const QString &error);
    void schedule();

    QUrl m_feed;
    PreferencesStore &m_store;
    PrefState &m_pref;
    FetcherFactory m_makeFetcher;
    std::unique_ptr<FeedFetcher> m_fetcher; // made on the first check
    bool m_checking = false;
    bool m_userInitiated = false;
    QTimer m_timer;
};

// The UpdateChecker WindowController holds. The checker itself belongs to the
// application object, so it is gone before the controller's statics are.
class AppcastUpdateFront : public UpdateChecker {
public:
    explicit AppcastUpdateFront(AppcastUpdateChecker *checker) : m_checker(checker) {}
    void checkForUpdates() override
    {
        if (m_checker)
            m_checker->checkForUpdates();
    }

private:
    QPointer<AppcastUpdateChecker> m_checker;
};
