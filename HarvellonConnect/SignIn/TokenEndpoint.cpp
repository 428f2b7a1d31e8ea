#include "SignIn/TokenEndpoint.h"

#include "SignIn/AuthorizationRequest.h"
#include "SignIn/FormBody.h"
#include "System/Logging.h"
#include "System/Text.h"

#include <QUrl>

namespace {
constexpr qint64 largestAnswer = 1024 * 1024;

/// An error's body for the log: its reason, but nothing of the secrets that it may repeat.
QString loggedBody(const QByteArray& body, const QStringList& secrets) {
    constexpr qsizetype longest = 1024; // bytes
    QString text = strictUtf8(body).value_or(QString());
    for (const QString& secret : secrets) {
        const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(secret));
        const QString escaped = QString(secret).replace(QLatin1Char('/'), QLatin1String("\\/"));
        const QString sent = QString::fromLatin1(formBody({{QString(), secret}}).mid(1)); // behind "="
        for (const QString& form : {secret, encoded, escaped, sent})
            text.replace(form, QStringLiteral("***"), Qt::CaseInsensitive);
    }
    return printable(beginningOf(text.toUtf8(), longest).value_or(QString()));
}
} // namespace

QCoro::Task<TokenResponse> TokenEndpoint::exchange(QString code, QString redirectURI, QString codeVerifier) {
    if (codeVerifier.isEmpty())
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("Code Verifier fehlt."));
    const Fields fields{{QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
                        {QStringLiteral("client_id"), oauthClientID},
                        {QStringLiteral("redirect_uri"), redirectURI},
                        {QStringLiteral("code"), code},
                        {QStringLiteral("code_verifier"), codeVerifier}};
    const HttpAnswer answer = co_await post(OAuthError::Case::tokenExchangeFailed, fields);
    if (!answer.succeeded()) {
        qCCritical(lcOAuth).noquote().nospace() << "Token-Exchange fehlgeschlagen: HTTP " << answer.status
                                                << " - " << loggedBody(answer.body, {code, codeVerifier});
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("HTTP %1").arg(answer.status));
    }
    co_return TokenResponse::parse(answer.body);
}

QCoro::Task<TokenResponse> TokenEndpoint::renew(QString refreshToken) {
    if (refreshToken.isEmpty())
        throw OAuthError(OAuthError::Case::refreshFailed, QStringLiteral("Kein Refresh-Token vorhanden."));
    const Fields fields{{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
                        {QStringLiteral("client_id"), oauthClientID},
                        {QStringLiteral("refresh_token"), refreshToken}};
    const HttpAnswer answer = co_await post(OAuthError::Case::refreshFailed, fields);
    if (!answer.succeeded()) {
        qCCritical(lcOAuth).noquote().nospace() << "Token-Refresh fehlgeschlagen: HTTP " << answer.status;
        throw RenewalRefused(answer.status);
    }
    co_return TokenResponse::parse(answer.body);
}

QCoro::Task<HttpAnswer> TokenEndpoint::post(OAuthError::Case error, Fields fields) {
    const std::optional<QUrl> url = Http::address(m_address);
    if (!url)
        throw OAuthError(error, QStringLiteral("Ungueltige Token-URL."));
    QNetworkRequest request(*url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
    const QByteArray method("POST");
    const QByteArray form = formBody(fields);
    co_return co_await Http::exchange(m_network, request, method, form, m_limit, largestAnswer);
}
