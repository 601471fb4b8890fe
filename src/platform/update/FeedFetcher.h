#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>

// Fetches the update feed. The one that goes over the network lives in the
// update module (UpdateModule.h), so that the counting process holds no
// QtNetwork until the first check is due.
class FeedFetcher {
public:
    // Runs once, later, on the main thread: the body, or a non-empty error
    // text (a log phrase) when the feed could not be had.
    using Done = std::function<void(const QByteArray &body, const QString &error)>;

    virtual ~FeedFetcher() = default;
    // One fetch at a time. Destroying the fetcher drops a fetch under way
    // without calling `done`.
    virtual void fetch(const QUrl &url, Done done) = 0;
};
