#include "Updates/UpdateController.h"

#include "System/Logging.h"
#include "System/Network/Http.h"
#include "System/Preferences.h"
#include "Updates/SignedFeed.h"
#include "Updates/UpdateFeed.h"

#include <QCoroTask>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <QUrl>

namespace {
constexpr std::chrono::hours day{24};
/// Loading the TLS libraries takes time, so the status icon and the projects come first.
constexpr std::chrono::seconds afterStart{5};
constexpr std::chrono::seconds timeLimit{15};
constexpr qint64 largestFeed = 1024 * 1024;
const QString title = QStringLiteral("Harvellon Connect");
const QString newestFeedKey = QStringLiteral("NewestUpdateFeed");
} // namespace

/// Reads the feed and announces a newer version.
struct UpdateController::Native {
    /// Why the feed is never read; empty where it is.
    [[nodiscard]] QString objection() const;
    QCoro::Task<> check(bool asked);
    /// What an answer of the feed's server offers. Throws FeedError.
    [[nodiscard]] std::optional<Release> newerRelease(const HttpAnswer& answer) const;

    UpdateController& owner;
    UpdateSource source;
    Preferences& preferences;
    QNetworkAccessManager& network;
    QTimer daily{};
};

UpdateController::UpdateController(const UpdateSource& source, Preferences& preferences,
                                   QNetworkAccessManager& network, QObject* parent)
    : QObject(parent), m_native(new Native{*this, source, preferences, network}) {
    if (!m_native->objection().isEmpty())
        return;
    connect(&m_native->daily, &QTimer::timeout, this, [this] { m_native->check(false); });
    m_native->daily.setTimerType(Qt::VeryCoarseTimer);
    m_native->daily.start(day);
    QTimer::singleShot(afterStart, this, [this] { m_native->check(false); });
}

UpdateController::~UpdateController() = default;

void UpdateController::checkForUpdates() {
    m_native->check(true);
}

QString UpdateController::Native::objection() const {
    if (!source.isAllowed)
        return updatesForbidden;
    return source.key.isEmpty() ? QStringLiteral("Diese Version sucht nicht selbst nach Updates.")
                                : QString();
}

QCoro::Task<> UpdateController::Native::check(bool asked) {
    const QPointer<UpdateController> guard(&owner);
    HttpAnswer answer;
    QString told = objection();
    bool isNews = false;
    const QUrl feed(source.feed, QUrl::StrictMode);
    if (told.isEmpty() && feed.scheme() == QLatin1String("https")) {
        const QNetworkRequest request(feed);
        const QByteArray method("GET");
        const QByteArray noBody;
        try {
            answer = co_await Http::exchange(network, request, method, noBody, timeLimit, largestFeed);
        } catch (const NetworkError&) {
            // Reported below, as an answer without a status.
        }
        if (!guard)
            co_return;
    }
    try {
        if (told.isEmpty()) {
            const std::optional<Release> newer = newerRelease(answer);
            isNews = newer.has_value();
            told = isNews ? QStringLiteral("Version %1 ist verfügbar: %2")
                                .arg(newer->version, newer->address.toString(QUrl::FullyEncoded))
                          : QStringLiteral("Harvellon Connect ist auf dem neuesten Stand.");
        }
    } catch (const FeedError& error) {
        told = error.description();
        qCWarning(lcUpdates).noquote() << "feed not used:" << told;
    }
    if (asked || isNews)
        Q_EMIT owner.announced(title, told);
}

std::optional<Release> UpdateController::Native::newerRelease(const HttpAnswer& answer) const {
    if (answer.status != 200)
        throw FeedError(FeedError::Case::unreachable);
    const std::optional<QByteArray> text = signedPart(answer.body, QByteArray::fromBase64(source.key));
    if (!text)
        throw FeedError(FeedError::Case::notGenuine);
    const UpdateFeed read = UpdateFeed::read(*text, source.currentVersion);
    const QString kept = preferences.text(newestFeedKey).value_or(QString());
    const QDateTime newest = QDateTime::fromString(kept, Qt::ISODate);
    read.requireFresh(newest, QDateTime::currentDateTimeUtc());
    if (read.issued != newest)
        preferences.set(newestFeedKey, read.issued.toUTC().toString(Qt::ISODate));
    return read.newer;
}
