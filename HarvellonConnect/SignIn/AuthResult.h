#pragma once

#include <QString>

#include <optional>

/// What a login yields.
struct AuthResult {
    std::optional<QString> accountID;
    std::optional<QString> email;
    std::optional<QString> displayName;
    QString accessToken;
    std::optional<QString> refreshToken;
};
