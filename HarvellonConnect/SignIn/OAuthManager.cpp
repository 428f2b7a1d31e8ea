#include "SignIn/OAuthManager.h"

#include "SignIn/CallbackServer.h"
#include "SignIn/Pkce.h"
#include "SignIn/SuccessPage.h"
#include "System/Async.h"
#include "System/Logging.h"

#include <QCoroSignal>
#include <QFile>
#include <QNetworkAccessManager>
#include <QPromise>
#include <QUrlQuery>

namespace {
const QString clientID = QStringLiteral("018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47");
const QString scope = QStringLiteral("openid profile email");
constexpr std::chrono::seconds requestLimit{15};
constexpr std::chrono::seconds loginLimit{120};
constexpr qint64 largestAnswer = 1024 * 1024;
constexpr int verifierBytes = 64;
constexpr int stateBytes = 32;

struct Callback {
    bool cancelled = false;
    QHash<QString, QString> parameters;
};

QByteArray applicationIcon() {
    QFile file(QStringLiteral(":/icons/AppIcon.png"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QUrl authorizationAddress(const QString& endpoint, const QString& redirectURI, const QString& state,
                          const QString& challenge) {
    std::optional<QUrl> address = Http::address(endpoint);
    if (!address)
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Ungueltige Authorization-URL"));
    QUrlQuery query;
    const auto add = [&query](const QString& name, const QString& value) {
        query.addQueryItem(name, QString::fromLatin1(QUrl::toPercentEncoding(value)));
    };
    add(QStringLiteral("client_id"), clientID);
    add(QStringLiteral("redirect_uri"), redirectURI);
    add(QStringLiteral("response_type"), QStringLiteral("code"));
    add(QStringLiteral("scope"), scope);
    add(QStringLiteral("state"), state);
    add(QStringLiteral("code_challenge"), challenge);
    add(QStringLiteral("code_challenge_method"), QStringLiteral("S256"));
    address->setQuery(query);
    return *address;
}
} // namespace

OAuthManager::Unfinished::Unfinished(OAuthManager* oauth) : m_oauth(oauth) {
    ++oauth->m_unfinished;
}

OAuthManager::Unfinished::~Unfinished() {
    if (m_oauth && --m_oauth->m_unfinished == 0)
        Q_EMIT m_oauth->becameIdle();
}

QCoro::Task<> OAuthManager::finish(std::chrono::milliseconds limit) {
    if (isIdle())
        co_return;
    QPromise<void> promise;
    promise.start();
    QObject context;
    connect(
        this, &OAuthManager::becameIdle, &context, [&promise] { promise.finish(); },
        Qt::SingleShotConnection);
    const QFuture<void> idle = promise.future();
    co_await Async::finishesWithin(idle, limit);
}

OAuthManager::OAuthManager(const ServerAddress& server, QNetworkAccessManager& network,
                           KeychainStore& keychain, OpenAddress openAddress, QObject* parent)
    : QObject(parent), m_authorizationEndpoint(server.at(QLatin1StringView("/oauth/authorize"))),
      m_tokenEndpoint(server.at(QLatin1StringView("/oauth/token"))),
      m_service(applicationIdentifier + QLatin1StringView(".oauth")), m_network(network),
      m_keychain(keychain), m_openAddress(std::move(openAddress)) {}

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
    } catch (const OAuthError& error) {
        setAuthenticating(false);
        setAuthError(error.description());
        throw;
    } catch (const NetworkError& error) {
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

    // Whatever comes first settles the wait; what comes later finds it settled.
    QPromise<std::optional<Callback>> promise;
    promise.start();
    QFuture<std::optional<Callback>> settled = promise.future();
    const auto settle = [&promise](std::optional<Callback> callback) {
        if (promise.future().isFinished())
            return;
        promise.addResult(std::move(callback));
        promise.finish();
    };
    QObject::connect(&server, &CallbackServer::received, &server,
                     [&settle](const QHash<QString, QString>& parameters) {
                         settle(Callback{false, parameters});
                     });
    QObject::connect(this, &OAuthManager::loginCancelled, &server, [&settle] { settle(Callback{true, {}}); });
    QTimer::singleShot(loginLimit, Qt::PreciseTimer, &server, [&settle] { settle(std::nullopt); });

    m_openAddress(address);
    qCInfo(lcOAuth).noquote().nospace() << "Browser geoeffnet fuer OAuth-Login auf Port " << port << ".";
    Q_EMIT browserOpened(address);
    const std::optional<Callback> callback = co_await settled;
    server.cancel();

    if (!callback)
        throw OAuthError(OAuthError::Case::timeout);
    if (callback->cancelled)
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Listener abgebrochen."));
    if (callback->parameters.value(QStringLiteral("state")) != expectedState)
        throw OAuthError(OAuthError::Case::stateMismatch);
    const QString code = callback->parameters.value(QStringLiteral("code"));
    if (code.isEmpty())
        throw OAuthError(OAuthError::Case::noCodeReceived);
    co_return co_await exchangeCode(code, redirectURI, codeVerifier);
}

void OAuthManager::cancelLogin() {
    m_cancelled = true;
    Q_EMIT loginCancelled();
}

QCoro::Task<AuthResult> OAuthManager::exchangeCode(QString code, QString redirectURI, QString codeVerifier) {
    const std::optional<QUrl> url = Http::address(m_tokenEndpoint);
    if (!url)
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("Ungueltige Token-URL."));
    const QByteArray form = formBody({{QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
                                      {QStringLiteral("client_id"), clientID},
                                      {QStringLiteral("redirect_uri"), redirectURI},
                                      {QStringLiteral("code"), code},
                                      {QStringLiteral("code_verifier"), codeVerifier}});
    const HttpAnswer answer = co_await post(*url, form);
    if (!answer.succeeded()) {
        // An error body may repeat what was sent, so it stays out of the log.
        qCCritical(lcOAuth).noquote().nospace() << "Token-Exchange fehlgeschlagen: HTTP " << answer.status;
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("HTTP %1").arg(answer.status));
    }
    const TokenResponse tokens = TokenResponse::parse(answer.body);
    if (m_cancelled) // while the server was asked
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Listener abgebrochen."));
    use(tokens.accessToken, tokens.refreshToken, std::nullopt);
    const IdentityClaims claims = IdentityClaims::read(tokens.idToken.value_or(QString()));
    qCInfo(lcOAuth).noquote().nospace()
        << "OAuth-Login erfolgreich. Account-ID ableitbar: " << (claims.sub ? "ja" : "nein") << ".";
    co_return AuthResult{claims.sub, claims.email, claims.name, tokens.accessToken, tokens.refreshToken};
}

QCoro::Task<HttpAnswer> OAuthManager::post(QUrl url, QByteArray form) {
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
    const QByteArray method("POST");
    co_return co_await Http::exchange(m_network, request, method, form, requestLimit, largestAnswer);
}

QCoro::Task<> OAuthManager::renewTokens(QString refusedToken) {
    while (m_renewal && m_renewingAccountID != m_activeAccountID) {
        QFuture<std::exception_ptr> another = *m_renewal;
        co_await another; // how that went is not the business of this account
    }
    if (m_accessToken && *m_accessToken != refusedToken)
        co_return;
    std::exception_ptr failure;
    if (m_renewal) {
        QFuture<std::exception_ptr> running = *m_renewal;
        failure = co_await running;
    } else {
        const Unfinished unfinished(this);
        m_renewingAccountID = m_activeAccountID;
        QPromise<std::exception_ptr> promise;
        promise.start();
        m_renewal = promise.future();
        try {
            co_await performRenewal();
        } catch (...) {
            failure = std::current_exception();
        }
        m_renewal.reset();
        promise.addResult(failure);
        promise.finish();
    }
    if (failure)
        std::rethrow_exception(failure);
}

QCoro::Task<> OAuthManager::performRenewal() {
    // The user may switch to another account meanwhile: what comes back belongs to the one that asked.
    const std::optional<QString> accountID = m_activeAccountID;
    const QString oldRefreshToken = m_refreshToken.value_or(QString());
    if (oldRefreshToken.isEmpty())
        throw OAuthError(OAuthError::Case::refreshFailed, QStringLiteral("Kein Refresh-Token vorhanden."));
    const std::optional<QUrl> url = Http::address(m_tokenEndpoint);
    if (!url)
        throw OAuthError(OAuthError::Case::refreshFailed, QStringLiteral("Ungueltige Token-URL."));
    const QByteArray form = formBody({{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
                                      {QStringLiteral("client_id"), clientID},
                                      {QStringLiteral("refresh_token"), oldRefreshToken}});
    const HttpAnswer answer = co_await post(*url, form);
    if (!answer.succeeded()) {
        qCCritical(lcOAuth).noquote().nospace() << "Token-Refresh fehlgeschlagen: HTTP " << answer.status;
        if (accountID) {
            const QString refusedAccount = *accountID;
            co_await removeTokens(refusedAccount);
        } else if (!m_activeAccountID) {
            clearSession();
        }
        throw OAuthError(OAuthError::Case::refreshFailed, QStringLiteral("HTTP %1").arg(answer.status));
    }
    const TokenResponse tokens = TokenResponse::parse(answer.body);
    const QString newRefreshToken = tokens.refreshToken.value_or(oldRefreshToken);
    if (m_activeAccountID == accountID)
        use(tokens.accessToken, newRefreshToken, accountID);
    if (accountID) {
        const QString account = *accountID;
        const QString accessToken = tokens.accessToken;
        co_await store(accessToken, newRefreshToken, account);
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
