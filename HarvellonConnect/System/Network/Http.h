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

/// No answer came: no connection, no time left, or a broken transfer. The description is the system's own.
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

/// The address that `text` spells; nothing when it is malformed or names no host.
[[nodiscard]] std::optional<QUrl> address(const QString& text);

/// What a redirect is: an answer like others, or a step that is taken as a browser does, but never from https
/// to http.
enum class Redirects { answers, followed };

/// Sends one request and waits for the whole answer, at most `limit` in all, redirects included. A body
/// beyond `largestBody` bytes ends the transfer. Throws NetworkError. Main thread.
QCoro::Task<HttpAnswer> exchange(QNetworkAccessManager& network, QNetworkRequest request, QByteArray method,
                                 QByteArray body, std::chrono::milliseconds limit, qint64 largestBody,
                                 Redirects redirects = Redirects::answers);

} // namespace Http
