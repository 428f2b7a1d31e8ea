#pragma once

#include <QString>

#include <optional>

/// Who signed in, as far as a token says so. Its signature is not checked: the token came over a TLS
/// connection that this program opened.
struct IdentityClaims {
    std::optional<QString> sub;
    std::optional<QString> email;
    std::optional<QString> name;

    /// Text that is no readable token has no claims.
    static IdentityClaims read(const QString& token);
};
