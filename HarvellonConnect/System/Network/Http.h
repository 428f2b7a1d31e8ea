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
class NetworkError : public Failure {
  public:
    explicit NetworkError(QString description) : m_description(std::move(description)) {}

    [[nodiscard]] QString description() const override { return m_description; }

  private:
    QString m_description;
};

/// What a server said, whatever its status.
struct HttpAnswer {
    int status = 0; ///< 0: not an HTTP answer
    QByteArray body;

    [[nodiscard]] bool succeeded() const { return status >= 200 && status <= 299; }
};

namespace Http {

/// Parses an address; nothing when it is malformed or has no host name.
[[nodiscard]] std::optional<QUrl> address(const QString& text);

/// Whether a redirect is returned as the answer, or followed as a browser does, but never from https to http.
enum class Redirects { answers, followed };

/// Sends one request and waits for the whole answer, at most `limit` in all, redirects included. A body
/// beyond `largestBody` bytes ends the transfer. Throws NetworkError. Main thread.
QCoro::Task<HttpAnswer> exchange(QNetworkAccessManager& network, QNetworkRequest request, QByteArray method,
                                 QByteArray body, std::chrono::milliseconds limit, qint64 largestBody,
                                 Redirects redirects = Redirects::answers);

} // namespace Http
