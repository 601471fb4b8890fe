#pragma once

#include "FeedFetcher.h"

#include <QProcess>

// Fetches the feed in a process of its own (UpdateCheck::runFetch), which
// ends with the fetch and takes the network's libraries with it.
class ChildFeedFetcher : public FeedFetcher {
public:
    ~ChildFeedFetcher() override;
    void fetch(const QUrl &url, Done done) override;

private:
    QProcess m_process;
};
