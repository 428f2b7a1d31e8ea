#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QString>

#include <chrono>
#include <mutex>
#include <optional>

namespace sandbox {

/// What the token endpoint hands out.
struct IssuedTokens {
    QString accessToken;
    QString refreshToken;
    QString identity; ///< key of the person
};

/// Codes, grants and tokens; all but the codes are kept in one file between runs. Any thread. What changes
/// the file throws std::runtime_error when it cannot be written.
class TokenLedger {
  public:
    explicit TokenLedger(QString file);

    /// A single-use code that is bound to the redirect address and the S256 challenge, good for a minute.
    QString issueCode(const QString& identity, const QString& redirectURI, const QString& challenge);
    /// Nothing when the code is unknown, used, expired, or not proven by `verifier`; a failed try uses it up.
    std::optional<IssuedTokens> redeemCode(const QString& code, const QString& redirectURI,
                                           const QString& verifier);
    /// The tokens of a new grant.
    IssuedTokens grant(const QString& identity);
    /// Rotates: the old refresh token is used up, and using it again revokes everything of its grant.
    std::optional<IssuedTokens> refresh(const QString& refreshToken);
    /// The person whose valid access token this is.
    std::optional<QString> identityFor(const QString& accessToken);

    /// All access tokens become invalid; refresh tokens stay good.
    void expireAccessTokens();
    void revokeAll();

  private:
    struct Code {
        QString identity;
        QString redirectURI;
        QString challenge;
        std::chrono::steady_clock::time_point issued;
    };

    IssuedTokens grantLocked(const QString& identity);
    IssuedTokens issue(const QString& grant, const QString& identity);
    void save() const;

    const QString m_file;
    std::mutex m_mutex;
    QHash<QString, Code> m_codes;
    QJsonObject m_access;  ///< access token to grant
    QJsonObject m_refresh; ///< refresh token to grant, while it is good
    QJsonObject m_used;    ///< used refresh token to grant
    QJsonObject m_grants;  ///< grant to identity
};

} // namespace sandbox
