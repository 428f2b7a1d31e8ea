#include "Updates/UpdateFeed.h"

#include <QVersionNumber>
#include <QXmlStreamReader>

namespace {
struct Item {
    QString version;
    QString address;
};

/// What one item says. The version stands in an element of its own or in an attribute of the enclosure.
Item readItem(QXmlStreamReader& xml) {
    Item item;
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        if (name == QLatin1String("shortVersionString")) {
            item.version = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        } else if (name == QLatin1String("link")) {
            item.address = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        } else {
            for (const QXmlStreamAttribute& attribute : xml.attributes()) {
                if (name == QLatin1String("enclosure") && item.version.isEmpty() &&
                    attribute.name() == QLatin1String("shortVersionString"))
                    item.version = attribute.value().toString();
                if (name == QLatin1String("enclosure") && item.address.isEmpty() &&
                    attribute.name() == QLatin1String("url"))
                    item.address = attribute.value().toString();
            }
            xml.skipCurrentElement();
        }
    }
    return item;
}
} // namespace

std::optional<Release> newerRelease(const QByteArray& feed, const QString& current) {
    QXmlStreamReader xml(feed);
    std::optional<Release> newest;
    QVersionNumber least = QVersionNumber::fromString(current);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("item"))
            continue;
        const Item item = readItem(xml);
        const QVersionNumber version = QVersionNumber::fromString(item.version);
        const QUrl address(item.address, QUrl::StrictMode);
        if (version.isNull() || version <= least || address.scheme() != QLatin1String("https"))
            continue;
        least = version;
        newest = Release{version.toString(), address};
    }
    return xml.hasError() ? std::nullopt : newest;
}
