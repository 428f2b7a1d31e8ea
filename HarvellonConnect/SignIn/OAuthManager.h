#pragma once

#include "SignIn/Keychain/KeychainStore.h"
#include "SignIn/OAuthError.h"
#include "SignIn/TokenResponse.h"
#include "System/Network/Http.h"
#include "System/Network/ServerAddress.h"

#include <QCoroTask>
#include <QFuture>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <chrono>
#include <exception>
#include <functional>
#include <optional>

class QNetworkAccessManager;

/// Signs in through the system browser and keeps the tokens of one account in use.
///
///     startLogin()
///        │ PKCE verifier and state; CallbackServer listens on 127.0.0.1
///        ▼
///     browser opened ──120 s──▶ timeout            cancelLogin() ──▶ listenerFailed
///        │ callback
///        ├── other state ──▶ stateMismatch
///        ├── no code     ──▶ noCodeReceived
///        ▼
///     code exchanged for tokens ──▶ AuthResult      (every way out ends isAuthenticating)
///
/// No code and no token reaches a log. Main thread; the keyring is asked on a worker thread.
class OAuthManager : public QObject {
    Q_OBJECT

  public:
    using OpenAddress = std::function<void(const QUrl&)>;

    struct Tokens {
        QString accessToken;
        std::optional<QString> refreshToken;
    };

    /// `openAddress` shows an address in the default browser. The references must outlive this.
    OAuthManager(const ServerAddress& server, QNetworkAccessManager& network, KeychainStore& keychain,
                 OpenAddress openAddress, QObject* parent = nullptr);

    [[nodiscard]] bool isAuthenticating() const { return m_isAuthenticating; }

    /// The description of the last login's error.
    [[nodiscard]] const std::optional<QString>& authError() const { return m_authError; }

    [[nodiscard]] const std::optional<QString>& accessToken() const { return m_accessToken; }

    [[nodiscard]] const std::optional<QString>& refreshToken() const { return m_refreshToken; }

    /// The account whose tokens are in use.
    [[nodiscard]] const std::optional<QString>& activeAccountID() const { return m_activeAccountID; }

    /// Runs one login and yields its tokens, in use but not yet stored. Throws OAuthError, or NetworkError
    /// when the token endpoint gave no answer.
    QCoro::Task<AuthResult> startLogin();
    /// Ends a login that waits for the browser.
    void cancelLogin();

    /// Renews the access token with the refresh token and stores what came back. Callers that overlap share
    /// one renewal, and one that comes too late (its `refusedToken` has been replaced meanwhile) needs none:
    /// a refresh token that is used twice ends the whole login. A refusal forgets the account's tokens;
    /// without an answer nothing changes. Throws OAuthError or NetworkError.
    QCoro::Task<> renewTokens(QString refusedToken);

    /// Takes the stored tokens of an account into use; false, and nothing changes, when there are none to be
    /// found (a locked keyring shows none).
    QCoro::Task<bool> loadTokens(QString accountID);
    /// Takes tokens into use and stores them for an account; says whether they are stored.
    QCoro::Task<bool> saveTokens(QString accessToken, std::optional<QString> refreshToken, QString accountID);
    /// Deletes the stored tokens of an account, and forgets them where they are in use.
    QCoro::Task<> removeTokens(QString accountID);
    /// Forgets the tokens in use; the keyring keeps them.
    void clearSession();
    /// The tokens of the older layout, which knew one account only.
    QCoro::Task<std::optional<Tokens>> loadLegacyTokens();
    QCoro::Task<> removeLegacyTokens();

    /// Whether no renewal is under way and the keyring is not being changed.
    [[nodiscard]] bool isIdle() const { return m_unfinished == 0; }

    /// Waits until that is so, at most `limit`. To be asked before the program ends: a renewal whose answer
    /// nobody stores leaves a used-up refresh token behind, and with it no login.
    QCoro::Task<> finish(std::chrono::milliseconds limit);

  Q_SIGNALS:
    void isAuthenticatingChanged();
    void accessTokenChanged();
    void authErrorChanged();
    /// The login waits for the browser, which was asked to show `address`.
    void browserOpened(QUrl address);
    void loginCancelled();
    /// Tokens are in use that could not be stored.
    void storingFailed();
    void becameIdle();

  private:
    /// While one lives, something is under way that `finish` waits for.
    class Unfinished {
      public:
        explicit Unfinished(OAuthManager* oauth);
        ~Unfinished();
        Q_DISABLE_COPY_MOVE(Unfinished)

      private:
        QPointer<OAuthManager> m_oauth;
    };

    struct Stored {
        std::optional<QByteArray> access;
        std::optional<QByteArray> refresh;
    };

    QCoro::Task<AuthResult> login();
    QCoro::Task<AuthResult> exchangeCode(QString code, QString redirectURI, QString codeVerifier);
    QCoro::Task<> performRenewal();
    QCoro::Task<HttpAnswer> post(QUrl url, QByteArray form);
    QCoro::Task<Stored> load(QString accessItem, QString refreshItem);
    QCoro::Task<bool> store(QString accessToken, std::optional<QString> refreshToken, QString accountID);
    QCoro::Task<> remove(QString accessItem, QString refreshItem);
    void setAuthenticating(bool authenticating);
    void setAuthError(std::optional<QString> error);
    void use(std::optional<QString> accessToken, std::optional<QString> refreshToken,
             std::optional<QString> accountID);

    const QString m_authorizationEndpoint;
    const QString m_tokenEndpoint;
    const QString m_service; ///< of the keyring items
    QNetworkAccessManager& m_network;
    KeychainStore& m_keychain;
    OpenAddress m_openAddress;

    bool m_isAuthenticating = false;
    std::optional<QString> m_authError;
    std::optional<QString> m_accessToken;
    std::optional<QString> m_refreshToken;
    std::optional<QString> m_activeAccountID;
    bool m_cancelled = false;                             ///< the login that runs
    std::optional<QFuture<std::exception_ptr>> m_renewal; ///< while one runs
    std::optional<QString> m_renewingAccountID;           ///< whose it is
    int m_unfinished = 0;                                 ///< renewals and changes of the keyring
};
