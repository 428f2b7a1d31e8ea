#include "SignIn/OAuthManager.h"

#include "SignIn/AuthorizationRequest.h"
#include "SignIn/CallbackServer.h"
#include "SignIn/Pkce.h"
#include "SignIn/SuccessPage.h"
#include "System/Async.h"
#include "System/Logging.h"

#include <QCoroFuture>
#include <QCoroSignal>
#include <QFile>

namespace {
/// An empty token is none.
std::optional<QString> nonEmpty(const std::optional<QString>& token) {
    return token && !token->isEmpty() ? token : std::nullopt;
}

constexpr int verifierBytes = 64;
constexpr int stateBytes = 32;

QByteArray applicationIcon() {
    QFile file(QStringLiteral(":/icons/AppIcon.png"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

OAuthManager::PendingWork::PendingWork(OAuthManager* oauth) : m_oauth(oauth) {
    ++oauth->m_pendingWork;
}

OAuthManager::PendingWork::~PendingWork() {
    if (!m_oauth || --m_oauth->m_pendingWork > 0)
        return;
    m_oauth->m_idle.finish();
}

QCoro::Task<> OAuthManager::finish(std::chrono::milliseconds limit) {
    m_ending = true;
    storeUnsaved();
    if (isIdle())
        co_return;
    m_idle = QPromise<void>();
    m_idle.start();
    const QFuture<void> idle = m_idle.future();
    co_await Async::finishesWithin(idle, limit);
}

OAuthManager::OAuthManager(const ServerAddress& server, QNetworkAccessManager& network,
                           std::shared_ptr<KeychainStore> keychain, OpenAddress openAddress,
                           OAuthLimits limits, QObject* parent)
    : QObject(parent), m_authorizationEndpoint(server.at(QLatin1StringView("/oauth/authorize"))),
      m_endpoint(server.at(QLatin1StringView("/oauth/token")), network, limits.request),
      m_store(std::move(keychain), limits.keyring), m_openAddress(std::move(openAddress)), m_limits(limits) {
    connect(&m_store, &TokenStore::allStored, this, &OAuthManager::allStored);
}

QCoro::Task<std::optional<OAuthManager::SignedIn>> OAuthManager::signIn(ChooseAccount choose) {
    const AuthResult result = co_await startLogin();
    co_return co_await assign(result, choose);
}

QCoro::Task<std::optional<OAuthManager::SignedIn>> OAuthManager::takeOverLegacyLogin(ChooseAccount choose) {
    const std::optional<Tokens> legacy = co_await m_store.loadLegacy();
    if (!legacy)
        co_return std::nullopt;
    const IdentityClaims claims = IdentityClaims::read(legacy->accessToken);
    const AuthResult result{claims.sub, claims.email, claims.name, legacy->accessToken, legacy->refreshToken};
    co_return co_await assign(result, choose);
}

QCoro::Task<std::optional<OAuthManager::SignedIn>> OAuthManager::assign(AuthResult result,
                                                                        ChooseAccount choose) {
    std::optional<QString> accountID;
    try {
        accountID = co_await choose(result);
    } catch (...) {
        // Tokens without an account are of no use. Those of the account before are loaded again when needed.
        if (!m_activeAccountID)
            clearSession();
        throw;
    }
    if (!accountID)
        co_return std::nullopt;
    // A keyring that waits for a password must not hold up the session.
    co_return SignedIn{*accountID, saveTokens(result.accessToken, result.refreshToken, *accountID)};
}

QCoro::Task<AuthResult> OAuthManager::startLogin() {
    if (m_isAuthenticating)
        throw OAuthError(OAuthError::Case::alreadyAuthenticating);
    m_cancelled = false;
    setAuthenticating(true);
    setAuthError(std::nullopt);
    try {
        AuthResult result = co_await login();
        setAuthenticating(false);
        co_return result;
    } catch (const Failure& error) {
        setAuthenticating(false);
        setAuthError(error.description());
        throw;
    }
}

QCoro::Task<AuthResult> OAuthManager::login() {
    const QString codeVerifier = Pkce::randomText(verifierBytes);
    const QString expectedState = Pkce::randomText(stateBytes);

    CallbackServer server(successAnswer(applicationIcon()));
    const quint16 port = server.start();
    const QString redirectURI = QStringLiteral("http://127.0.0.1:%1/callback").arg(port);
    const QUrl address = authorizationAddress(m_authorizationEndpoint, redirectURI, expectedState,
                                              Pkce::challenge(codeVerifier));

    m_callbackServer = &server;
    m_openAddress(address);
    qCInfo(lcOAuth).noquote().nospace() << "Browser geoeffnet fuer OAuth-Login auf Port " << port << ".";
    const std::optional<CallbackServer::Outcome> callback =
        co_await qCoro(&server, &CallbackServer::ended, m_limits.login);

    if (!callback)
        throw OAuthError(OAuthError::Case::timeout);
    if (callback->cancelled)
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Listener abgebrochen."));
    if (callback->parameters.value(QStringLiteral("state")) != expectedState)
        throw OAuthError(OAuthError::Case::stateMismatch);
    const QString code = callback->parameters.value(QStringLiteral("code"));
    if (code.isEmpty())
        throw OAuthError(OAuthError::Case::noCodeReceived);
    const TokenResponse tokens = co_await m_endpoint.exchange(code, redirectURI, codeVerifier);
    if (m_cancelled) // while the token endpoint was asked
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Listener abgebrochen."));
    const std::optional<QString> refreshToken = nonEmpty(tokens.refreshToken);
    setTokens(tokens.accessToken, refreshToken, std::nullopt);
    const IdentityClaims claims = IdentityClaims::read(tokens.idToken.value_or(QString()));
    qCInfo(lcOAuth).noquote().nospace()
        << "OAuth-Login erfolgreich. Account-ID ableitbar: " << (claims.sub ? "ja" : "nein") << ".";
    co_return AuthResult{claims.sub, claims.email, claims.name, tokens.accessToken, refreshToken};
}

void OAuthManager::cancelLogin() {
    m_cancelled = true;
    if (m_callbackServer)
        m_callbackServer->cancel();
}

QCoro::Task<> OAuthManager::renewTokens(QString refusedToken) {
    const auto replaced = [this, refusedToken] { return m_accessToken && *m_accessToken != refusedToken; };
    const auto another = [this] { // of another account or an older pair: its outcome does not matter
        return m_renewal &&
               (m_renewal->accountID != m_activeAccountID || m_renewal->refreshToken != m_refreshToken);
    };
    while (!replaced() && another()) {
        QFuture<bool> running = m_renewal->outcome;
        try {
            co_await running;
        } catch (const Failure&) {
        }
    }
    if (replaced())
        co_return;
    if (m_renewal) {
        QFuture<bool> running = m_renewal->outcome;
        co_await running;
        co_return;
    }
    if (m_ending)
        throw NetworkError(QStringLiteral("Das Programm wird beendet."));
    const PendingWork pending(this);
    QPromise<bool> promise;
    promise.start();
    m_renewal = Renewal{m_activeAccountID, m_refreshToken, promise.future()};
    try {
        co_await performRenewal();
        promise.addResult(true);
    } catch (...) {
        promise.setException(std::current_exception());
    }
    m_renewal.reset();
    promise.finish();
    promise.future().result(); // throws where the renewal has failed
}

QCoro::Task<> OAuthManager::performRenewal() {
    // The user may switch to another account meanwhile: what comes back belongs to the one that asked.
    const std::optional<QString> accountID = m_activeAccountID;
    const quint64 version = m_store.version(accountID.value_or(QString()));
    const QString oldRefreshToken = m_refreshToken.value_or(QString());
    TokenResponse tokens;
    std::exception_ptr refusal;
    try {
        tokens = co_await m_endpoint.renew(oldRefreshToken);
    } catch (const RenewalRefused&) {
        refusal = std::current_exception();
    }
    // A sign-in has brought newer tokens, or the account was removed.
    const bool replaced = accountID ? m_store.version(*accountID) != version
                                    : m_activeAccountID || m_refreshToken != oldRefreshToken;
    if (replaced)
        co_return;
    if (refusal) {
        if (accountID) {
            const QString refusedAccount = *accountID;
            co_await removeTokens(refusedAccount);
        } else {
            clearSession();
        }
        std::rethrow_exception(refusal);
    }
    const QString newRefreshToken = nonEmpty(tokens.refreshToken).value_or(oldRefreshToken);
    if (m_activeAccountID == accountID)
        setTokens(tokens.accessToken, newRefreshToken, accountID);
    if (accountID) {
        const QString account = *accountID;
        const Tokens renewed{tokens.accessToken, newRefreshToken};
        co_await store(renewed, account);
    }
    qCInfo(lcOAuth) << "Access Token erfolgreich erneuert.";
}

void OAuthManager::setAuthenticating(bool authenticating) {
    m_isAuthenticating = authenticating;
    Q_EMIT isAuthenticatingChanged();
}

void OAuthManager::setAuthError(std::optional<QString> error) {
    if (m_authError == error)
        return;
    m_authError = std::move(error);
    Q_EMIT authErrorChanged();
}

QCoro::Task<bool> OAuthManager::store(Tokens tokens, QString accountID) {
    const PendingWork pending(this);
    const QPointer<OAuthManager> self(this);
    const bool stored = co_await m_store.save(tokens, accountID);
    if (self && !stored)
        Q_EMIT storingFailed();
    co_return stored;
}

QCoro::Task<> OAuthManager::storeUnsaved() {
    const PendingWork pending(this);
    co_await m_store.storeUnsaved();
}

QCoro::Task<bool> OAuthManager::loadTokens(QString accountID, StillWanted stillWanted) {
    const QPointer<OAuthManager> self(this);
    const std::optional<Tokens> tokens = co_await m_store.load(accountID);
    if (!self || !tokens || !stillWanted())
        co_return false;
    setTokens(tokens->accessToken, tokens->refreshToken, accountID);
    qCInfo(lcOAuth) << "OAuth-Tokens fuer Account geladen.";
    co_return true;
}

QCoro::Task<bool> OAuthManager::saveTokens(QString accessToken, std::optional<QString> refreshToken,
                                           QString accountID) {
    setTokens(accessToken, refreshToken, accountID);
    const Tokens tokens{accessToken, refreshToken};
    co_return co_await store(tokens, accountID);
}

QCoro::Task<> OAuthManager::removeTokens(QString accountID) {
    if (m_activeAccountID == accountID)
        clearSession();
    const PendingWork pending(this);
    co_await m_store.remove(accountID);
}

QCoro::Task<> OAuthManager::removeLegacyTokens() {
    const PendingWork pending(this);
    co_await m_store.removeLegacy();
}

void OAuthManager::clearSession() {
    setTokens(std::nullopt, std::nullopt, std::nullopt);
    setAuthError(std::nullopt);
}

void OAuthManager::setTokens(std::optional<QString> accessToken, std::optional<QString> refreshToken,
                             std::optional<QString> accountID) {
    m_refreshToken = std::move(refreshToken);
    m_activeAccountID = std::move(accountID);
    if (m_accessToken == accessToken)
        return;
    m_accessToken = std::move(accessToken);
    Q_EMIT accessTokenChanged();
}
