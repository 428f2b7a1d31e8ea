#pragma once

#include "SignIn/OAuthError.h"
#include "SignIn/TokenResponse.h"
#include "System/Network/Http.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QString>

#include <chrono>
#include <utility>

/// The server has answered a renewal, but not with 2xx.
class RenewalRefused : public OAuthError {
  public:
    explicit RenewalRefused(int status)
        : OAuthError(Case::refreshFailed, QStringLiteral("HTTP %1").arg(status)) {}
};

/// The identity server's endpoint that hands out tokens. A request is sent once at most. No code, verifier or
/// token reaches the system log. Main thread.
class TokenEndpoint {
  public:
    /// `address` is checked at each request. `network` outlives this.
    TokenEndpoint(QString address, QNetworkAccessManager& network, std::chrono::milliseconds limit)
        : m_address(std::move(address)), m_network(network), m_limit(limit) {}

    /// The tokens for an authorization code. Throws OAuthError::tokenExchangeFailed, or NetworkError.
    QCoro::Task<TokenResponse> exchange(QString code, QString redirectURI, QString codeVerifier);
    /// New tokens for a refresh token. Throws RenewalRefused, OAuthError or NetworkError.
    QCoro::Task<TokenResponse> renew(QString refreshToken);

  private:
    using Fields = QList<std::pair<QString, QString>>;

    QCoro::Task<HttpAnswer> post(OAuthError::Case error, Fields fields);

    const QString m_address;
    QNetworkAccessManager& m_network;
    const std::chrono::milliseconds m_limit;
};
