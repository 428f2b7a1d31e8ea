#include "Updates/UpdateController.h"

#include "System/Network/Http.h"
#include "Updates/UpdateFeed.h"

#include <QCoroTask>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace {
constexpr std::chrono::hours day{24};
/// Loading the TLS libraries takes time, so the status icon and the projects come first.
constexpr std::chrono::seconds afterStart{5};
constexpr std::chrono::seconds timeLimit{15};
constexpr qint64 largestFeed = 1024 * 1024;
const QString title = QStringLiteral("Harvellon Connect");
} // namespace

/// Reads the feed and announces a newer version.
struct UpdateController::Native {
    QCoro::Task<> check(bool asked);

    UpdateController& owner;
    QUrl feed;
    QString currentVersion;
    QNetworkAccessManager& network;
    QTimer daily{};
};

UpdateController::UpdateController(const QString& feed, const QString& currentVersion,
                                   QNetworkAccessManager& network, QObject* parent)
    : QObject(parent), m_native(new Native{*this, QUrl(feed, QUrl::StrictMode), currentVersion, network}) {
    connect(&m_native->daily, &QTimer::timeout, this, [this] { m_native->check(false); });
    m_native->daily.setTimerType(Qt::VeryCoarseTimer);
    m_native->daily.start(day);
    QTimer::singleShot(afterStart, this, [this] { m_native->check(false); });
}

UpdateController::~UpdateController() = default;

void UpdateController::checkForUpdates() {
    m_native->check(true);
}

QCoro::Task<> UpdateController::Native::check(bool asked) {
    HttpAnswer answer;
    if (feed.scheme() == QLatin1String("https")) {
        const QNetworkRequest request(feed);
        const QByteArray method("GET");
        const QByteArray noBody;
        try {
            answer = co_await Http::exchange(network, request, method, noBody, timeLimit, largestFeed);
        } catch (const NetworkError&) {
            // Reported below where the user has asked.
        }
    }
    if (answer.status != 200) {
        if (asked)
            Q_EMIT owner.announced(title,
                                   QStringLiteral("Die Liste der Versionen ist gerade nicht erreichbar."));
        co_return;
    }
    const std::optional<Release> release = newerRelease(answer.body, currentVersion);
    if (release)
        Q_EMIT owner.announced(title,
                               QStringLiteral("Version %1 ist verfügbar: %2")
                                   .arg(release->version, release->address.toString(QUrl::FullyEncoded)));
    else if (asked)
        Q_EMIT owner.announced(title, QStringLiteral("Harvellon Connect ist auf dem neuesten Stand."));
}
