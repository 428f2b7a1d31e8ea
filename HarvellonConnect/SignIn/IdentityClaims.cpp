#include "SignIn/IdentityClaims.h"

#include "SignIn/JsonText.h"
#include "System/Text.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QStringList>

IdentityClaims IdentityClaims::read(const QString& token) {
    const QStringList pieces = token.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (pieces.size() < 2)
        return {};
    const auto payload = QByteArray::fromBase64Encoding(
        pieces.at(1).toUtf8(), QByteArray::Base64UrlEncoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!payload)
        return {};
    const QJsonObject object = QJsonDocument::fromJson(*payload).object();
    std::optional<QString> sub = jsonText(object, QLatin1StringView("sub"));
    // It becomes part of log lines and of names in the keyring, which a NUL would cut off.
    if (sub && (sub->isEmpty() || printable(*sub) != *sub))
        sub.reset();
    return {sub, jsonText(object, QLatin1StringView("email")), jsonText(object, QLatin1StringView("name"))};
}
