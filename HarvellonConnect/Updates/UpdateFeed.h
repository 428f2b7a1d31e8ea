#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// One version that the feed offers.
struct Release {
    QString version; ///< what people read
    QUrl address;    ///< where it is to be had; https only

    bool operator==(const Release&) const = default;
};

/// The newest release of an update feed that is newer than `current`. Nothing when there is none, and for a
/// feed that cannot be read.
[[nodiscard]] std::optional<Release> newerRelease(const QByteArray& feed, const QString& current);
