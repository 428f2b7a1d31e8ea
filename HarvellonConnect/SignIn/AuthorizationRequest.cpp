#include "SignIn/AuthorizationRequest.h"

#include "SignIn/OAuthError.h"
#include "System/Network/Http.h"

#include <QUrlQuery>

QUrl authorizationAddress(const QString& endpoint, const QString& redirectURI, const QString& state,
                          const QString& challenge) {
    std::optional<QUrl> address = Http::address(endpoint);
    if (!address)
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Ungueltige Authorization-URL"));
    QUrlQuery query;
    const auto add = [&query](const QString& name, const QString& value) {
        query.addQueryItem(name, QString::fromLatin1(QUrl::toPercentEncoding(value)));
    };
    add(QStringLiteral("client_id"), oauthClientID);
    add(QStringLiteral("redirect_uri"), redirectURI);
    add(QStringLiteral("response_type"), QStringLiteral("code"));
    add(QStringLiteral("scope"), QStringLiteral("openid profile email"));
    add(QStringLiteral("state"), state);
    add(QStringLiteral("code_challenge"), challenge);
    add(QStringLiteral("code_challenge_method"), QStringLiteral("S256"));
    address->setQuery(query);
    return *address;
}
