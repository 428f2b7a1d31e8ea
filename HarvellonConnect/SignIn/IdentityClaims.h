#pragma once

#include <QString>

#include <optional>

/// The user whom a token names. Its signature is not checked: the token came over a TLS
/// connection that this program opened.
struct IdentityClaims {
    std::optional<QString> sub; ///< printable and not empty
    std::optional<QString> email;
    std::optional<QString> name;

    /// Text that is no readable token has no claims.
    static IdentityClaims read(const QString& token);
};
