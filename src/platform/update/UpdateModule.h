#pragma once

#include "FeedFetcher.h"
#include "UpdatePresenter.h"

#include <memory>

// What an update check needs beyond its schedule comes in two modules, each
// loaded when first wanted, so that the counting process holds none of it
// (see bench/findings.md):
//  - narv_update fetches the feed (QtNetwork), at each check (300 seconds
//    after the very first start, else every 12 hours, or when the user
//    asks), in a process of a moment (UpdateCheck::runFetch);
//  - narv_updatewindow tells the outcome (Qt Quick), when there is one to
//    show: a newer release, or anything when the user asked.
namespace UpdateModule {
inline constexpr const char *fetchModule = "narv_update.so";
// FeedFetcher *(): a new fetcher, owned by the caller.
inline constexpr const char *fetchEntry = "narv_update_create_fetcher";
inline constexpr const char *windowModule = "narv_updatewindow.so";
// UpdatePresenter *(): the one update window, owned by the module.
inline constexpr const char *windowEntry = "narv_update_window";

// Null, said in the log once, when the module cannot be loaded.
UpdatePresenter *window();
} // namespace UpdateModule
