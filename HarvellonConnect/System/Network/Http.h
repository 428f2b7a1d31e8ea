#pragma once

#include "System/Failure.h"

#include <QByteArray>
#include <QCoroTask>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

class QNetworkAccessManager;

/// No complete answer came: no connection, a time-out, or a broken transfer. The description is Qt's.
class NetworkError : public TextFailure {
  public:
    using TextFailure::TextFailure;
};

/// What a server said, whatever its status.
struct HttpAnswer {
    int status = 0; ///< 0: not an HTTP answer
    QByteArray body;

    [[nodiscard]] bool succeeded() const { return status >= 200 && status <= 299; }
};

namespace Http {

/// After system sleep a timer fires before a reply that has already arrived: so long it is still awaited.
constexpr std::chrono::milliseconds graceAfterSleep{2000};

// Descriptions of a NetworkError.
inline const QString lateAnswer =
    QStringLiteral("Zeitüberschreitung: Der Server hat nicht rechtzeitig geantwortet.");
inline const QString largeAnswer = QStringLiteral("Die Antwort des Servers ist zu groß.");

/// Parses an address; nothing when it is malformed or has no host name.
[[nodiscard]] std::optional<QUrl> address(const QString& text);

/// Whether a redirect is returned as the answer, or followed as a browser does, but never from https to http.
enum class Redirects { answers, followed };

/// For `largestBody`: the status is the answer, and the transfer ends with the header.
constexpr qint64 statusAlone = 0;

/// Sends one request and waits for the whole answer, at most `limit` in all, redirects included. A body
/// beyond `largestBody` bytes ends the transfer. Anything but GET is sent once at most, without `network`,
/// and its redirects are answers. Throws NetworkError. Main thread.
QCoro::Task<HttpAnswer> exchange(QNetworkAccessManager& network, QNetworkRequest request, QByteArray method,
                                 QByteArray body, std::chrono::milliseconds limit, qint64 largestBody,
                                 Redirects redirects = Redirects::answers);

} // namespace Http
