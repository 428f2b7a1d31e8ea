#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

#include "Directory/DecodingError.h"

/// The rules that all records share when they are read from and written to JSON.
namespace Json {

inline QJsonDocument parsed(const QByteArray& json) {
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        throw DecodingError(QString(), error.errorString());
    return document;
}

inline QJsonObject object(const QJsonValue& value, const QString& path) {
    if (!value.isObject())
        throw DecodingError(path, QStringLiteral("Objekt erwartet"));
    return value.toObject();
}

inline QString requiredText(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    if (!value.isString())
        throw DecodingError(key, QStringLiteral("Text erwartet"));
    return value.toString();
}

/// Absent and null are nothing; another type is an error.
inline std::optional<QString> optionalText(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    return requiredText(object, key);
}

inline std::optional<bool> optionalBoolean(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    if (!value.isBool())
        throw DecodingError(key, QStringLiteral("Wahrheitswert erwartet"));
    return value.toBool();
}

/// A whole number that fits 64 bits, with all its digits; nothing for any other value.
inline std::optional<qint64> integer(const QJsonValue& value) {
    constexpr qint64 one = 1;
    if (!value.isDouble() || value.toInteger(0) != value.toInteger(one))
        return std::nullopt;
    return value.toInteger();
}

/// One object with its members in the given order (QJsonObject would sort them).
inline QByteArray ordered(const QList<std::pair<QLatin1StringView, QByteArray>>& members) {
    QByteArray text("{");
    for (const auto& [key, value] : members) {
        if (text.size() > 1)
            text.append(',');
        text.append('"').append(QByteArray(key.data(), key.size())).append("\":").append(value);
    }
    return text.append('}');
}

inline QByteArray scalar(const QJsonValue& value) {
    const QByteArray inArray = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return inArray.mid(1, inArray.size() - 2);
}

} // namespace Json
