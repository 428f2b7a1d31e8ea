#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

/// What a login yields.
struct AuthResult {
    std::optional<QString> accountID;
    std::optional<QString> email;
    std::optional<QString> displayName;
    QString accessToken;
    std::optional<QString> refreshToken;
};

/// The token endpoint's answer. Lifetimes are ignored: the directory's refusal is what counts.
struct TokenResponse {
    QString accessToken;
    std::optional<QString> refreshToken;
    std::optional<QString> idToken;

    /// Throws OAuthError::tokenExchangeFailed, during a renewal too.
    static TokenResponse parse(const QByteArray& body);
};

/// Who signed in, as far as a token says so. Its signature is not checked: it came over a connection of ours.
struct IdentityClaims {
    std::optional<QString> sub;
    std::optional<QString> email;
    std::optional<QString> name;

    /// Anything that is no readable token has no claims.
    static IdentityClaims read(const QString& token);
};

/// The body of a form post. Names are written as they are.
QByteArray formBody(const QList<std::pair<QString, QString>>& fields);
