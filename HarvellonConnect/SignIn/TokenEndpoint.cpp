#include "SignIn/TokenEndpoint.h"

#include "SignIn/AuthorizationRequest.h"
#include "SignIn/FormBody.h"
#include "System/Logging.h"
#include "System/Text.h"

#include <QUrl>

namespace {
constexpr qint64 largestAnswer = 1024 * 1024;

/// `text` with the characters that JSON has escaped as \uXXXX or \/.
QString unescaped(const QString& text) {
    constexpr int length = 6;
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QStringView rest = QStringView(text).mid(i);
        bool isEscape = rest.startsWith(QLatin1String("\\u")) && rest.size() >= length;
        const ushort unit = isEscape ? rest.mid(2, length - 2).toUShort(&isEscape, 16) : 0;
        plain.append(isEscape ? QChar(unit) : text.at(i));
        if (isEscape)
            i += length - 1;
    }
    return plain.replace(QLatin1String("\\/"), QLatin1String("/"));
}

QString masked(QString text, const QStringList& secrets) {
    for (const QString& secret : secrets) {
        const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(secret));
        const QString sent = QString::fromLatin1(formBody({{QString(), secret}}).mid(1)); // behind "="
        for (const QString& form : {secret, encoded, sent})
            text.replace(form, QStringLiteral("***"), Qt::CaseInsensitive);
    }
    return text;
}

/// An error's body for the log: its reason, but nothing of the secrets that it may repeat.
QString loggedBody(const QByteArray& body, const QStringList& secrets) {
    constexpr qsizetype longest = 1024; // bytes
    const QString asSent = masked(strictUtf8(body).value_or(QString()), secrets);
    const QString text = masked(unescaped(asSent), secrets);
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
