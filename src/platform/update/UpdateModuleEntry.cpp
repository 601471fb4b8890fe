#include "NetworkFeedFetcher.h"

// The fetch module's one entry point, looked up by name once it is loaded.
// The module resolves the core's symbols against the program (which exports
// them).
extern "C" Q_DECL_EXPORT FeedFetcher *narv_update_create_fetcher()
{
    return new NetworkFeedFetcher;
}
