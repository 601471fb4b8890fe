#include "AppcastUpdateChecker.h"

#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/Log.h"
#include "settings/DateText.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QUrlQuery>

AppcastUpdateChecker::AppcastUpdateChecker(const QUrl &feed, PreferencesStore &store,
                                           PrefState &pref, FetcherFactory makeFetcher,
                                           QObject *parent)
    : QObject(parent), m_feed(feed), m_store(store), m_pref(pref),
      m_makeFetcher(std::move(makeFetcher))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &AppcastUpdateChecker::checkInBackground);
}

AppcastUpdateChecker::~AppcastUpdateChecker() = default;

QUrl AppcastUpdateChecker::profiledUrl(const QUrl &feed)
{
    QUrl url = feed;
    QUrlQuery query(url);
    query.addQueryItem(QStringLiteral("appName"), AppInfo::name());
    query.addQueryItem(QStringLiteral("appVersion"), AppInfo::version());
    query.addQueryItem(QStringLiteral("model"), AppInfo::model());
    query.addQueryItem(QStringLiteral("osVersion"), AppInfo::osVersion());
    url.setQuery(query);
    return url;
}

qint64 AppcastUpdateChecker::secondsUntilNextCheck(const QDateTime &lastCheck, const QDateTime &now)
{
    if (!lastCheck.isValid())
        return firstCheckDelay;
    const qint64 since = qMax<qint64>(0, lastCheck.secsTo(now));
    return qMax<qint64>(0, checkInterval - since);
}

QDateTime AppcastUpdateChecker::lastCheck() const
{
    if (!m_store.contains(QString::fromLatin1(lastCheckKey)))
        return {};
    return DateText::toDate(m_store.stringValue(QString::fromLatin1(lastCheckKey), QString()));
}

void AppcastUpdateChecker::start()
{
    connect(&m_pref, &PrefState::autoCheckUpdateChanged, this, &AppcastUpdateChecker::schedule,
            Qt::UniqueConnection);
    schedule();
}

void AppcastUpdateChecker::showOutcomes(PresenterSource source)
{
    connect(this, &AppcastUpdateChecker::updateAvailable, this,
            [source](const AppcastItem &item, bool) {
                if (UpdatePresenter *presenter = source())
                    presenter->showUpdate(item);
            });
    connect(this, &AppcastUpdateChecker::upToDate, this, [source](bool userInitiated) {
        if (!userInitiated)
            return;
        if (UpdatePresenter *presenter = source())
            presenter->showUpToDate();
    });
    connect(this, &AppcastUpdateChecker::checkFailed, this,
            [source](const QString &reason, bool userInitiated) {
                // A scheduled check that fails stays in the log.
                if (!userInitiated)
                    return;
                if (UpdatePresenter *presenter = source())
                    presenter->showFailure(reason);
            });
}

void AppcastUpdateChecker::schedule()
{
    if (!m_pref.autoCheckUpdate()) {
        m_timer.stop();
        return;
    }
    const qint64 seconds = secondsUntilNextCheck(lastCheck(), Clock::now());
    // A QTimer counts in int milliseconds; 12 hours fit easily.
    m_timer.start(int(qMin<qint64>(seconds, checkInterval) * 1000));
}

void AppcastUpdateChecker::checkForUpdates()
{
    check(true);
}

void AppcastUpdateChecker::checkInBackground()
{
    if (!m_pref.autoCheckUpdate())
        return;
    check(false);
}

void AppcastUpdateChecker::check(bool userInitiated)
{
    if (m_checking) {
        // A check is under way: its outcome is shown if the user asked now.
        m_userInitiated = m_userInitiated || userInitiated;
        return;
    }
    m_userInitiated = userInitiated;
    m_store.setString(QString::fromLatin1(lastCheckKey), DateText::fromDate(Clock::now()));
    if (!m_fetcher && m_makeFetcher)
        m_fetcher = m_makeFetcher();
    m_checking = true;
    if (!m_fetcher) {
        // Said once where the fetcher could not be made; here only the outcome.
        onFinished(QByteArray(), QStringLiteral("the update check is not installed"));
        return;
    }
    LOG_INFO(QStringLiteral("checking for updates at ") + m_feed.toString());
    m_fetcher->fetch(profiledUrl(m_feed), [this](const QByteArray &body, const QString &error) {
        onFinished(body, error);
    });
}

void AppcastUpdateChecker::onFinished(const QByteArray &body, const QString &fetchError)
{
    m_checking = false;
    const bool userInitiated = m_userInitiated;
    m_userInitiated = false;
    schedule();

    if (!fetchError.isEmpty()) {
        LOG_WARNING(QStringLiteral("update check failed: ") + fetchError);
        Q_EMIT checkFailed(fetchError, userInitiated);
        return;
    }
    QString error;
    const auto items = Appcast::parse(body, &error);
    if (!items) {
        const QString reason = QStringLiteral("the update feed is not a valid appcast: ") + error;
        LOG_WARNING(QStringLiteral("update check failed: ") + reason);
        Q_EMIT checkFailed(reason, userInitiated);
        return;
    }
    if (const auto update = Appcast::newestUpdate(*items, AppInfo::version(), AppInfo::build())) {
        LOG_INFO(QStringLiteral("update available: ") + update->displayVersion());
        Q_EMIT updateAvailable(*update, userInitiated);
    } else {
        LOG_INFO(QStringLiteral("no update: ") + AppInfo::version() +
                 QStringLiteral(" is the newest"));
        Q_EMIT upToDate(userInitiated);
    }
}
