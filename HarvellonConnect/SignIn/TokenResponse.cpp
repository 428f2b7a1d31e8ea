#include "SignIn/TokenResponse.h"

#include "SignIn/OAuthError.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QUrl>

namespace {
std::optional<QString> text(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}
} // namespace

TokenResponse TokenResponse::parse(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        throw OAuthError(OAuthError::Case::tokenExchangeFailed, QStringLiteral("Ungueltige JSON-Antwort."));
    const QJsonObject object = document.object();
    const QString accessToken = text(object, QLatin1StringView("access_token")).value_or(QString());
    if (accessToken.isEmpty())
        throw OAuthError(OAuthError::Case::tokenExchangeFailed,
                         QStringLiteral("Kein Access Token in der Antwort."));
    return {accessToken, text(object, QLatin1StringView("refresh_token")),
            text(object, QLatin1StringView("id_token"))};
}

IdentityClaims IdentityClaims::read(const QString& token) {
    const QStringList pieces = token.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (pieces.size() < 2)
        return {};
    const auto payload = QByteArray::fromBase64Encoding(
        pieces.at(1).toUtf8(), QByteArray::Base64UrlEncoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!payload)
        return {};
    const QJsonObject object = QJsonDocument::fromJson(*payload).object();
    return {text(object, QLatin1StringView("sub")), text(object, QLatin1StringView("email")),
            text(object, QLatin1StringView("name"))};
}

QByteArray formBody(const QList<std::pair<QString, QString>>& fields) {
    QByteArray body;
    for (const auto& [name, value] : fields) {
        if (!body.isEmpty())
            body.append('&');
        body.append(name.toUtf8()).append('=').append(QUrl::toPercentEncoding(value, "!$'()*,/:;?@"));
    }
    return body;
}
