#include "Directory/Account.h"

#include "Directory/Json.h"

namespace {
constexpr QLatin1StringView idKey("id");
constexpr QLatin1StringView emailKey("email");
constexpr QLatin1StringView displayNameKey("displayName");
} // namespace

QByteArray encodeAccounts(const QList<Account>& accounts) {
    QByteArray text("[");
    for (const Account& account : accounts) {
        QList<std::pair<QLatin1StringView, QByteArray>> members{{idKey, Json::scalar(account.id)}};
        if (account.email)
            members.append({emailKey, Json::scalar(*account.email)});
        members.append({displayNameKey, Json::scalar(account.displayName)});
        if (text.size() > 1)
            text.append(',');
        text.append(Json::ordered(members));
    }
    return text.append(']');
}

QList<Account> decodeAccounts(const QByteArray& json) {
    const QJsonDocument document = Json::parsed(json);
    if (!document.isArray())
        throw DecodingError(QString(), QStringLiteral("Liste erwartet"));
    QList<Account> accounts;
    const QJsonArray array = document.array();
    for (const QJsonValue value : array) {
        const QJsonObject object = Json::object(value, QStringLiteral("[]"));
        accounts.append({Json::requiredText(object, idKey), Json::optionalText(object, emailKey),
                         Json::requiredText(object, displayNameKey)});
    }
    return accounts;
}
