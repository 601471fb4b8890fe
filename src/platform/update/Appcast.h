#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// One release in the update feed.
struct AppcastItem {
    QString title;
    QString version;      // sparkle:version, the build
    QString shortVersion; // sparkle:shortVersionString, the version people see
    QUrl releaseNotesLink;
    QUrl downloadLink; // the enclosure, else the item's link

    // What the update window shows: the short version when there is one.
    QString displayVersion() const { return shortVersion.isEmpty() ? version : shortVersion; }
};

// The update feed: an RSS "appcast" in the format Sparkle made common, e.g.
//
//   <rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
//     <channel><item>
//       <title>Narv 0.2.0</title>
//       <sparkle:releaseNotesLink>https://narv.app/release_note/</sparkle:releaseNotesLink>
//       <enclosure url="https://narv.app/download/narv-0.2.0.tar.gz"
//                  sparkle:version="7" sparkle:shortVersionString="0.2.0"/>
//     </item></channel>
//   </rss>
//
// Versions may sit on the enclosure or as elements of the item. Items for
// another system (sparkle:os other than "linux") or on a channel of their own
// (sparkle:channel) are left out, as are items without any version.
namespace Appcast {
// The items of the feed; nothing, with `error` filled in, when it is not an
// RSS document.
std::optional<QList<AppcastItem>> parse(const QByteArray &xml, QString *error);

// Compares two version texts part by part ("0.10.0" > "0.9.3"); missing parts
// count as 0, so "1.0" equals "1.0.0". A text part after the numbers marks a
// pre-release, older than the same numbers without one ("1.0-beta" < "1.0").
// Returns <0, 0 or >0.
int compareVersions(const QString &a, const QString &b);

// Whether `item` is newer than the running version/build: its shown version
// is greater, or equal with a greater build.
bool isNewer(const AppcastItem &item, const QString &version, const QString &build);

// The newest item that is newer than version/build, if any.
std::optional<AppcastItem> newestUpdate(const QList<AppcastItem> &items, const QString &version,
                                        const QString &build);
} // namespace Appcast
