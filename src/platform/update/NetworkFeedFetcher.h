#pragma once

#include "FeedFetcher.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>

class QNetworkReply;

// Gets the feed with QNetworkAccessManager: the proxy of the environment, a
// 30-second limit, "Narv/<version>" as the user agent.
class NetworkFeedFetcher : public QObject, public FeedFetcher {
    Q_OBJECT
public:
    static constexpr int transferTimeout = 30000; // milliseconds

    NetworkFeedFetcher();
    ~NetworkFeedFetcher() override;

    void fetch(const QUrl &url, Done done) override;

private:
    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
};
