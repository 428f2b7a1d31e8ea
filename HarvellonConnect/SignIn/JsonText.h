#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

/// The text under `key`; nothing when it is absent or of another type.
[[nodiscard]] inline std::optional<QString> jsonText(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}
