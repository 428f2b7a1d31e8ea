#include "SignIn/TokenResponse.h"

#include "SignIn/JsonText.h"
#include "SignIn/OAuthError.h"

#include <QJsonDocument>

TokenResponse TokenResponse::parse(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("Ungueltige JSON-Antwort."));
    const QJsonObject object = document.object();
    const QString accessToken = jsonText(object, QLatin1StringView("access_token")).value_or(QString());
    if (accessToken.isEmpty())
        throw OAuthError(OAuthError::Case::tokenExchangeFailed,
                         QStringLiteral("Kein Access Token in der Antwort."));
    return {accessToken, jsonText(object, QLatin1StringView("refresh_token")),
            jsonText(object, QLatin1StringView("id_token"))};
}
