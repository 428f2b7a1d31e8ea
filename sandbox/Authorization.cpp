#include "sandbox/Authorization.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

namespace sandbox {

namespace {
const QString clientID = QStringLiteral("018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47");

QByteArray base64url(const QByteArray& bytes) {
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

bool matches(const QString& text, const QString& pattern) {
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}
} // namespace

bool isKnownClient(const Parameters& parameters) {
    return parameters.value(QStringLiteral("client_id")) == clientID;
}

QString refusal(const Parameters& request) {
    if (!isKnownClient(request))
        return QStringLiteral("Unbekanntes Programm: %1").arg(request.value(QStringLiteral("client_id")));
    // Compare the text, not a parsed URL: browsers and parsers disagree about malformed addresses.
    const QString redirect = request.value(QStringLiteral("redirect_uri"));
    if (!matches(redirect, QStringLiteral(R"(http://127\.0\.0\.1:[1-9][0-9]{0,4}/callback)")))
        return QStringLiteral("Die Rücksprungadresse ist nicht erlaubt: %1").arg(redirect);
    const QString type = request.value(QStringLiteral("response_type"));
    if (type != QLatin1String("code"))
        return QStringLiteral("Unbekannte Art der Anmeldung: %1").arg(type);
    if (request.value(QStringLiteral("code_challenge_method")) != QLatin1String("S256") ||
        !matches(request.value(QStringLiteral("code_challenge")), QStringLiteral("[A-Za-z0-9_-]{43}")))
        return QStringLiteral("Der Anmeldung fehlt der Nachweis nach S256.");
    return {};
}

QByteArray callbackAddress(const Parameters& request, const QString& name, const QString& value) {
    return request.value(QStringLiteral("redirect_uri")).toUtf8() + '?' + name.toUtf8() + '=' +
           QUrl::toPercentEncoding(value) +
           "&state=" + QUrl::toPercentEncoding(request.value(QStringLiteral("state")));
}

QString idToken(const Identity& identity) {
    const QJsonObject claims{{QStringLiteral("sub"), identity.sub},
                             {QStringLiteral("email"), identity.email},
                             {QStringLiteral("name"), identity.name}};
    return QString::fromLatin1(base64url(R"({"alg":"none"})") + '.' +
                               base64url(QJsonDocument(claims).toJson(QJsonDocument::Compact)) + '.' +
                               base64url("sandbox"));
}

} // namespace sandbox
