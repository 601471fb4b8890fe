#include "NetworkFeedFetcher.h"

#include "app/AppInfo.h"

#include <QNetworkReply>
#include <QNetworkRequest>

NetworkFeedFetcher::NetworkFeedFetcher() = default;

NetworkFeedFetcher::~NetworkFeedFetcher()
{
    // The manager would finish the reply on its way out, into an owner that
    // is being destroyed.
    if (m_reply) {
        m_reply->disconnect(this);
        delete m_reply;
    }
}

void NetworkFeedFetcher::fetch(const QUrl &url, Done done)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      AppInfo::name() + u'/' + AppInfo::version());
    QNetworkReply *reply = m_network.get(request);
    m_reply = reply;
    connect(reply, &QNetworkReply::finished, this, [this, reply, done = std::move(done)] {
        if (m_reply == reply)
            m_reply = nullptr;
        reply->deleteLater();
        if (reply->error() == QNetworkReply::NoError) {
            done(reply->readAll(), QString());
            return;
        }
        const QString error = reply->errorString();
        done(QByteArray(),
             error.isEmpty() ? QStringLiteral("network error %1").arg(reply->error()) : error);
    });
}
