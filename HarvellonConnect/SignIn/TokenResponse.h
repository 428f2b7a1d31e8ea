#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The token endpoint's answer. Lifetimes are ignored: a token is renewed when the directory refuses it.
struct TokenResponse {
    QString accessToken;
    std::optional<QString> refreshToken;
    std::optional<QString> idToken;

    /// Throws OAuthError::tokenExchangeFailed, for the answer to a renewal as well.
    static TokenResponse parse(const QByteArray& body);
};
