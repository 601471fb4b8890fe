#include "Appcast.h"

#include <QVersionNumber>
#include <QXmlStreamReader>

namespace {
const QString sparkleNamespace =
    QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

// Reads one <item> whose start tag the reader is on. False when it belongs to
// another system or channel.
bool readItem(QXmlStreamReader &xml, AppcastItem &item)
{
    bool wanted = true;
    QUrl link;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        const bool sparkle = xml.namespaceUri() == sparkleNamespace;
        if (name == u"enclosure" && !sparkle) {
            const QXmlStreamAttributes attributes = xml.attributes();
            const QString os = attributes.value(sparkleNamespace, QStringLiteral("os")).toString();
            if (!os.isEmpty() && os != u"linux")
                wanted = false;
            item.downloadLink = QUrl(attributes.value(QStringLiteral("url")).toString());
            if (const auto v = attributes.value(sparkleNamespace, QStringLiteral("version"));
                !v.isEmpty())
                item.version = v.toString().trimmed();
            if (const auto v =
                    attributes.value(sparkleNamespace, QStringLiteral("shortVersionString"));
                !v.isEmpty())
                item.shortVersion = v.toString().trimmed();
            xml.skipCurrentElement();
        } else if (name == u"title" && !sparkle) {
            item.title = xml.readElementText().trimmed();
        } else if (name == u"link" && !sparkle) {
            link = QUrl(xml.readElementText().trimmed());
        } else if (sparkle && name == u"version") {
            item.version = xml.readElementText().trimmed();
        } else if (sparkle && name == u"shortVersionString") {
            item.shortVersion = xml.readElementText().trimmed();
        } else if (sparkle && name == u"releaseNotesLink") {
            item.releaseNotesLink = QUrl(xml.readElementText().trimmed());
        } else if (sparkle && name == u"channel") {
            wanted = false;
            xml.skipCurrentElement();
        } else if (sparkle && name == u"os") {
            if (xml.readElementText().trimmed() != u"linux")
                wanted = false;
        } else {
            xml.skipCurrentElement();
        }
    }
    if (item.downloadLink.isEmpty())
        item.downloadLink = link;
    return wanted && !item.displayVersion().isEmpty();
}

struct SplitVersion {
    QVersionNumber numbers;
    QString suffix;
};

SplitVersion split(const QString &text)
{
    qsizetype suffixIndex = 0;
    SplitVersion v;
    v.numbers = QVersionNumber::fromString(text.trimmed(), &suffixIndex).normalized();
    v.suffix = text.trimmed().mid(suffixIndex);
    // "1.0-beta" and "1.0beta" alike.
    while (!v.suffix.isEmpty() && !v.suffix.front().isLetterOrNumber())
        v.suffix.remove(0, 1);
    return v;
}
} // namespace

std::optional<QList<AppcastItem>> Appcast::parse(const QByteArray &data, QString *error)
{
    QXmlStreamReader xml(data);
    QList<AppcastItem> items;
    if (!xml.readNextStartElement() || xml.name() != u"rss") {
        if (error) {
            *error =
                xml.hasError()
                    ? QStringLiteral("%1 (line %2)").arg(xml.errorString()).arg(xml.lineNumber())
                    : QStringLiteral("not an RSS feed");
        }
        return std::nullopt;
    }
    while (xml.readNextStartElement()) {
        if (xml.name() != u"channel") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            if (xml.name() != u"item") {
                xml.skipCurrentElement();
                continue;
            }
            AppcastItem item;
            if (readItem(xml, item))
                items.append(item);
        }
    }
    if (xml.hasError()) {
        if (error)
            *error = QStringLiteral("%1 (line %2)").arg(xml.errorString()).arg(xml.lineNumber());
        return std::nullopt;
    }
    return items;
}

int Appcast::compareVersions(const QString &a, const QString &b)
{
    const SplitVersion left = split(a);
    const SplitVersion right = split(b);
    if (const int c = QVersionNumber::compare(left.numbers, right.numbers); c != 0)
        return c;
    if (left.suffix.isEmpty() != right.suffix.isEmpty())
        return left.suffix.isEmpty() ? 1 : -1;
    return QString::compare(left.suffix, right.suffix, Qt::CaseInsensitive);
}

bool Appcast::isNewer(const AppcastItem &item, const QString &version, const QString &build)
{
    if (item.shortVersion.isEmpty())
        return compareVersions(item.version, version) > 0;
    if (const int c = compareVersions(item.shortVersion, version); c != 0)
        return c > 0;
    return !item.version.isEmpty() && compareVersions(item.version, build) > 0;
}

std::optional<AppcastItem> Appcast::newestUpdate(const QList<AppcastItem> &items,
                                                 const QString &version, const QString &build)
{
    std::optional<AppcastItem> newest;
    for (const AppcastItem &item : items) {
        if (!isNewer(item, version, build))
            continue;
        if (!newest || isNewer(item, newest->displayVersion(), newest->version))
            newest = item;
    }
    return newest;
}
