#include "Directory/ProjectAPI.h"

#include "Directory/DecodingError.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Network/Http.h"
#include "System/Text.h"

#include <QNetworkRequest>
#include <QUrl>

namespace {
constexpr std::chrono::seconds timeLimit{15};
constexpr qint64 largestAnswer = 16 * 1024 * 1024; // 10,000 projects take about 2 MB
constexpr qsizetype loggedCharacters = 200;

/// The beginning of a text, or nothing where it is none; the rest is not looked at.
QString beginning(const QByteArray& bytes) {
    constexpr qsizetype longestCharacter = 4; // bytes
    const std::optional<QString> text = beginningOf(bytes, loggedCharacters * longestCharacter);
    return printable(text.value_or(QString()).left(loggedCharacters));
}
} // namespace

QString ProjectAPIError::description() const {
    switch (m_case) {
    case Case::badResponse:
        return QStringLiteral("API lieferte eine unerwartete Antwort (%1).").arg(m_statusCode);
    case Case::badURL:
        return QStringLiteral("Ungueltige API-URL.");
    case Case::missingToken:
        return QStringLiteral("API-Token in den Einstellungen eintragen, um fortzufahren.");
    case Case::unauthorized:
        return QStringLiteral("Falscher Token oder keine Verbindung.");
    case Case::decodeFailed:
        return QStringLiteral("Projekt-JSON konnte nicht gelesen werden.");
    }
    Q_UNREACHABLE();
}

ProjectAPI::ProjectAPI(QString endpoint, QNetworkAccessManager& network)
    : m_endpoint(std::move(endpoint)), m_network(network) {}

QCoro::Task<ApplicationsResponse> ProjectAPI::fetchApplications(QString token) {
    const QString trimmed = token.trimmed();
    if (trimmed.isEmpty())
        throw ProjectAPIError(ProjectAPIError::Case::missingToken);
    const std::optional<QUrl> address = Http::address(m_endpoint);
    if (!address)
        throw ProjectAPIError(ProjectAPIError::Case::badURL);
    const QUrl url = *address;

    bool methodRefused = false;
    const QByteArray post("POST");
    try {
        co_return co_await request(url, trimmed, post);
    } catch (const ProjectAPIError& error) {
        constexpr int methodNotAllowed = 405;
        methodRefused =
            error.error() == ProjectAPIError::Case::badResponse && error.statusCode() == methodNotAllowed;
        if (!methodRefused)
            throw;
    }
    const QByteArray get("GET");
    co_return co_await request(url, trimmed, get);
}

QCoro::Task<ApplicationsResponse> ProjectAPI::request(QUrl url, QString token, QByteArray method) {
    QNetworkRequest message(url);
    message.setRawHeader("Authorization", "Bearer " + token.toUtf8());
    message.setRawHeader("Accept", "application/json");
    message.setRawHeader("Content-Type", "application/json");
    const QByteArray noBody;
    const HttpAnswer answer =
        co_await Http::exchange(m_network, message, method, noBody, timeLimit, largestAnswer);

    if (!answer.succeeded()) {
        if (answer.status != 0)
            qCCritical(lcProjectAPI).noquote().nospace()
                << "API " << method << " " << url.toString() << " -> HTTP " << answer.status << ": "
                << beginning(answer.body);
        if (answer.status == 401 || answer.status == 403)
            throw ProjectAPIError(ProjectAPIError::Case::unauthorized);
        throw ProjectAPIError(ProjectAPIError::Case::badResponse, answer.status);
    }

    const std::function<std::optional<ApplicationsResponse>()> decode =
        [body = answer.body]() -> std::optional<ApplicationsResponse> {
        try {
            return ApplicationsResponse::decode(body);
        } catch (const DecodingError& error) {
            qCWarning(lcProjectAPI) << "directory answer:" << error.path() << error.description();
            return std::nullopt;
        }
    };
    std::optional<std::optional<ApplicationsResponse>> decoded = co_await Async::onWorker(decode);
    if (!decoded || !*decoded)
        throw ProjectAPIError(ProjectAPIError::Case::decodeFailed);
    co_return std::move(**decoded);
}
