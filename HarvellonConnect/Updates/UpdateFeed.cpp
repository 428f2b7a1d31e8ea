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

/// A time that means the same everywhere, such as 2026-11-26T10:00:00Z.
QDateTime readTime(QXmlStreamReader& xml) {
    const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
    const QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    return time.timeSpec() == Qt::LocalTime ? QDateTime() : time;
}
} // namespace

QString FeedError::description() const {
    switch (m_case) {
    case Case::unreachable:
        return QStringLiteral("Die Liste der Versionen ist gerade nicht erreichbar.");
    case Case::notGenuine:
        return QStringLiteral("Die Liste der Versionen ist nicht echt und wird nicht verwendet.");
    case Case::unreadable:
        return QStringLiteral("Die Liste der Versionen ist nicht lesbar.");
    case Case::fromTheFuture:
        return QStringLiteral("Die Liste der Versionen ist neuer als die Uhr dieses Rechners.");
    case Case::older:
        return QStringLiteral("Die Liste der Versionen ist älter als die zuletzt gelesene.");
    case Case::expired:
        return QStringLiteral("Die Liste der Versionen ist abgelaufen.");
    }
    Q_UNREACHABLE();
}

UpdateFeed UpdateFeed::read(const QByteArray& feed, const QString& current) {
    QXmlStreamReader xml(feed);
    UpdateFeed read;
    QVersionNumber least = QVersionNumber::fromString(current);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("issued"))
            read.issued = readTime(xml);
        else if (xml.name() == QLatin1String("expires"))
            read.expires = readTime(xml);
        if (xml.name() != QLatin1String("item"))
            continue;
        const Item item = readItem(xml);
        const QVersionNumber version = QVersionNumber::fromString(item.version);
        const QUrl address(item.address, QUrl::StrictMode);
        if (version.isNull() || version <= least || address.scheme() != QLatin1String("https"))
            continue;
        least = version;
        read.newer = Release{version.toString(), address};
    }
    if (xml.hasError() || !read.issued.isValid() || !read.expires.isValid())
        throw FeedError(FeedError::Case::unreadable);
    return read;
}

void UpdateFeed::requireFresh(const QDateTime& newest, const QDateTime& now) const {
    // A date far ahead would be remembered, and every later feed refused. Clocks differ, so a day is allowed.
    if (issued > now.addDays(1))
        throw FeedError(FeedError::Case::fromTheFuture);
    if (newest.isValid() && issued < newest)
        throw FeedError(FeedError::Case::older);
    if (now >= expires)
        throw FeedError(FeedError::Case::expired);
}
