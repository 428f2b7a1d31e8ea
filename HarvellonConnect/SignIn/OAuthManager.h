#pragma once

#include "SignIn/AuthResult.h"
#include "SignIn/IdentityClaims.h"
#include "SignIn/Keychain/TokenStore.h"
#include "SignIn/OAuthError.h"
#include "SignIn/TokenEndpoint.h"
#include "System/Network/ServerAddress.h"

#include <QCoroTask>
#include <QFuture>
#include <QObject>
#include <QPointer>
#include <QPromise>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

class CallbackServer;
class QNetworkAccessManager;

/// How long each step may take.
struct OAuthLimits {
    std::chrono::milliseconds login = std::chrono::seconds(120); ///< for the browser to come back
    std::chrono::milliseconds request = std::chrono::seconds(15);
    std::chrono::milliseconds keyring = std::chrono::seconds(120); ///< it may wait for the user's password
};

/// Signs in through the system browser and owns the tokens of one account: those in use and those stored.
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
///        │ signIn() only
///        ▼
///     account chosen ──▶ tokens in use for it ──▶ stored
///
/// No code and no token reaches the system log. Main thread; the keyring is asked on a worker thread.
class OAuthManager : public QObject {
    Q_OBJECT

  public:
    using OpenAddress = std::function<void(const QUrl&)>;
    /// Decides which account the login is for; an empty result or an exception abandons the login.
    using ChooseAccount = std::function<QCoro::Task<std::optional<QString>>(AuthResult result)>;

    /// Tokens are in use for an account and on their way into the keyring.
    struct SignedIn {
        QString accountID;
        QCoro::Task<bool> storing; ///< yields whether they could be stored
    };

    /// Says after a wait whether the tokens are still to be taken into use.
    using StillWanted = std::function<bool()>;

    /// `openAddress` shows an address in the default browser. `network` must outlive this.
    OAuthManager(const ServerAddress& server, QNetworkAccessManager& network,
                 std::shared_ptr<KeychainStore> keychain, OpenAddress openAddress, OAuthLimits limits = {},
                 QObject* parent = nullptr);

    [[nodiscard]] bool isAuthenticating() const { return m_isAuthenticating; }

    /// The description of the last login's error.
    [[nodiscard]] const std::optional<QString>& authError() const { return m_authError; }

    [[nodiscard]] const std::optional<QString>& accessToken() const { return m_accessToken; }

    [[nodiscard]] const std::optional<QString>& refreshToken() const { return m_refreshToken; }

    /// The account whose tokens are in use.
    [[nodiscard]] const std::optional<QString>& activeAccountID() const { return m_activeAccountID; }

    /// Runs one login through the browser and ends with its tokens in use for the account that `choose`
    /// names, or with an error and nothing in use. A keyring that waits for a password does not hold it up.
    /// Throws OAuthError, or NetworkError when the token endpoint gave no answer, or what `choose` throws.
    QCoro::Task<std::optional<SignedIn>> signIn(ChooseAccount choose);
    /// The same for tokens of the older layout, without a browser; nothing when there are none.
    QCoro::Task<std::optional<SignedIn>> takeOverLegacyLogin(ChooseAccount choose);
    QCoro::Task<> removeLegacyTokens();

    /// Runs one login and yields its tokens, in use for no account yet and not stored. Throws as `signIn`.
    QCoro::Task<AuthResult> startLogin();
    /// Ends a login that waits for the browser.
    void cancelLogin();

    /// Renews the access token with the refresh token and stores the new pair. Overlapping callers share one
    /// renewal, and a late caller (its `refusedToken` has been replaced meanwhile) needs none: using a
    /// refresh token twice ends the whole login. A refusal forgets the account's tokens; without an answer
    /// nothing changes, nor where the account got newer tokens meanwhile or was removed. Throws OAuthError or
    /// NetworkError.
    QCoro::Task<> renewTokens(QString refusedToken);

    /// Takes the stored tokens of an account into use; false, and nothing changes, when none are found (a
    /// locked keyring shows none), or when `stillWanted` denies it.
    QCoro::Task<bool> loadTokens(
        QString accountID, StillWanted stillWanted = [] { return true; });
    /// Takes tokens into use for an account, at once, and stores them; says whether they are stored.
    QCoro::Task<bool> saveTokens(QString accessToken, std::optional<QString> refreshToken, QString accountID);
    /// Deletes the stored tokens of an account, and forgets them where they are in use.
    QCoro::Task<> removeTokens(QString accountID);
    /// Forgets the tokens in use; the keyring keeps them.
    void clearSession();

    /// Whether no renewal is under way and the keyring is not being changed.
    [[nodiscard]] bool isIdle() const { return m_pendingWork == 0; }

    /// Tries again to store tokens that could not be stored.
    QCoro::Task<> storeUnsaved();

    /// Starts no more renewals, and waits until `isIdle`, at most `limit`. Call it before the program ends:
    /// when the answer to a renewal is not stored, the keyring keeps a used-up refresh token and the login is
    /// lost.
    QCoro::Task<> finish(std::chrono::milliseconds limit);

  Q_SIGNALS:
    void isAuthenticatingChanged();
    void accessTokenChanged();
    void authErrorChanged();
    /// Tokens are in use that could not be stored.
    void storingFailed();
    /// All tokens are stored now, be it at another try.
    void allStored();

  private:
    /// Counts as pending work while it lives; `finish` waits for it.
    class PendingWork {
      public:
        explicit PendingWork(OAuthManager* oauth);
        ~PendingWork();
        Q_DISABLE_COPY_MOVE(PendingWork)

      private:
        QPointer<OAuthManager> m_oauth;
    };

    struct Renewal {
        std::optional<QString> accountID;    ///< whose tokens are renewed
        std::optional<QString> refreshToken; ///< the one that is used up
        QFuture<bool> outcome;               ///< or its exception
    };

    QCoro::Task<AuthResult> login();
    QCoro::Task<std::optional<SignedIn>> assign(AuthResult result, ChooseAccount choose);
    QCoro::Task<> performRenewal();
    QCoro::Task<bool> store(Tokens tokens, QString accountID);
    void setAuthenticating(bool authenticating);
    void setAuthError(std::optional<QString> error);
    void setTokens(std::optional<QString> accessToken, std::optional<QString> refreshToken,
                   std::optional<QString> accountID);

    const QString m_authorizationEndpoint;
    TokenEndpoint m_endpoint;
    TokenStore m_store;
    OpenAddress m_openAddress;
    const OAuthLimits m_limits;

    bool m_isAuthenticating = false;
    std::optional<QString> m_authError;
    std::optional<QString> m_accessToken;
    std::optional<QString> m_refreshToken;
    std::optional<QString> m_activeAccountID;
    QPointer<CallbackServer> m_callbackServer; ///< while a login waits for the browser
    bool m_cancelled = false;                  ///< the login that runs
    std::optional<Renewal> m_renewal;          ///< while one runs
    bool m_ending = false;                     ///< no renewal starts any more
    QPromise<void> m_idle;                     ///< awaited by `finish`
    int m_pendingWork = 0;                     ///< renewals and changes of the keyring
};
