#include "AppcastUpdateChecker.h"

#include "app/AppInfo.h"
#include "app/Clock.h"
#include "app/Log.h"
#include "settings/DateText.h"
#include "settings/PrefState.h"
#include "settings/PreferencesStore.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrlQuery>

AppcastUpdateChecker::AppcastUpdateChecker(const QUrl &feed, PreferencesStore &store,
                                           PrefState &pref, QObject *parent)
    : QObject(parent), m_feed(feed), m_store(store), m_pref(pref)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &AppcastUpdateChecker::checkInBackground);
}

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
    if (m_reply) {
        // A check is under way: its outcome is shown if the user asked now.
        m_userInitiated = m_userInitiated || userInitiated;
        return;
    }
    m_userInitiated = userInitiated;
    m_store.setString(QString::fromLatin1(lastCheckKey), DateText::fromDate(Clock::now()));
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(profiledUrl(m_feed));
    request.setTransferTimeout(30000);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      AppInfo::name() + u'/' + AppInfo::version());
    LOG_INFO(QStringLiteral("checking for updates at ") + m_feed.toString());
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::finished, this, &AppcastUpdateChecker::onFinished);
}

void AppcastUpdateChecker::onFinished()
{
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->deleteLater();
    const bool userInitiated = m_userInitiated;
    m_userInitiated = false;
    schedule();

    if (reply->error() != QNetworkReply::NoError) {
        LOG_WARNING(QStringLiteral("update check failed: ") + reply->errorString());
        Q_EMIT checkFailed(reply->errorString(), userInitiated);
        return;
    }
    QString error;
    const auto items = Appcast::parse(reply->readAll(), &error);
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
