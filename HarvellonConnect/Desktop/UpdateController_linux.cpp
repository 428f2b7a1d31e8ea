#include "Desktop/UpdateController.h"

#include "Desktop/UpdateFeed.h"
#include "System/Http.h"

#include <QNetworkRequest>

namespace {
constexpr std::chrono::hours day{24};
constexpr std::chrono::seconds timeLimit{15};
constexpr qint64 largestFeed = 1024 * 1024;
const QString title = QStringLiteral("Harvellon Connect");
} // namespace

UpdateController::UpdateController(const QString& feed, const QString& currentVersion,
                                   QNetworkAccessManager& network, QObject* parent)
    : QObject(parent), m_feed(feed, QUrl::StrictMode), m_currentVersion(currentVersion), m_network(network) {
    connect(&m_daily, &QTimer::timeout, this, [this] { check(false); });
    m_daily.setTimerType(Qt::VeryCoarseTimer);
    m_daily.start(day);
    check(false);
}

void UpdateController::checkForUpdates() {
    check(true);
}

QCoro::Task<> UpdateController::check(bool asked) {
    HttpAnswer answer;
    if (m_feed.scheme() == QLatin1String("https")) {
        const QNetworkRequest request(m_feed);
        const QByteArray method("GET");
        const QByteArray noBody;
        try {
            answer = co_await Http::exchange(m_network, request, method, noBody, timeLimit, largestFeed);
        } catch (const NetworkError&) {
            // Told below, to whoever asked.
        }
    }
    if (answer.status != 200) {
        if (asked)
            Q_EMIT announced(title, QStringLiteral("Die Liste der Versionen ist gerade nicht erreichbar."));
        co_return;
    }
    const std::optional<Release> release = newerRelease(answer.body, m_currentVersion);
    if (release)
        Q_EMIT announced(title, QStringLiteral("Version %1 ist verfügbar: %2")
                                    .arg(release->version, release->address.toString(QUrl::FullyEncoded)));
    else if (asked)
        Q_EMIT announced(title, QStringLiteral("Harvellon Connect ist auf dem neuesten Stand."));
}
