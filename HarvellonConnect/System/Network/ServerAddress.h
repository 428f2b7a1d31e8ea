#pragma once

#include <QString>

/// The address of the identity and directory server, checked once at start.
struct ServerAddress {
    QString address; ///< without a slash at its end; empty when the configured one must not be used
    QString problem; ///< the German sentence for the user; empty when all is well

    [[nodiscard]] QString at(QLatin1StringView path) const {
        return address.isEmpty() ? QString() : address + path;
    }

    /// Accepts https anywhere and plain http to this machine's own loopback addresses alone: scheme, host and
    /// port, nothing behind them.
    static ServerAddress checked(const QString& text);
    /// What the environment variable HARVELLON_SERVER says, otherwise `builtIn`.
    static ServerAddress configured(const QString& builtIn);
};
