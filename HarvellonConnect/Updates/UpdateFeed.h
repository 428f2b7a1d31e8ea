#pragma once

#include "System/Failure.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <optional>

/// One version that the feed offers.
struct Release {
    QString version; ///< what people read
    QUrl address;    ///< where it is to be had; https only

    bool operator==(const Release&) const = default;
};

/// Why a feed is not used. The description is the German sentence shown to the user.
class FeedError : public Failure {
  public:
    enum class Case { unreachable, notGenuine, unreadable, fromTheFuture, older, expired };

    explicit FeedError(Case error) : m_case(error) {}

    [[nodiscard]] QString description() const override;

  private:
    Case m_case;
};

/// An update feed, as far as it matters here.
struct UpdateFeed {
    QDateTime issued;             ///< when it was signed
    QDateTime expires;            ///< from then on nobody vouches for it
    std::optional<Release> newer; ///< the newest release that is newer than this program

    /// Reads a feed whose signature is good; `current` is the version of this program. Throws FeedError. Any
    /// thread.
    static UpdateFeed read(const QByteArray& feed, const QString& current);

    /// Throws FeedError for a feed that somebody may be holding back or repeating at the time `now`; `newest`
    /// is when the newest feed so far was signed, invalid where there was none.
    void requireFresh(const QDateTime& newest, const QDateTime& now) const;
};
