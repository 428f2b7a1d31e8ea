#pragma once

#include <QString>

#include <optional>

/// The path of a socket in `folder`, short and of the same length for every `name`. Nothing where it would be
/// too long for a socket that ssh makes, or holds a character that ssh or a terminal may read as more than
/// that.
[[nodiscard]] std::optional<QString> socketPath(const QString& folder, const QString& name);
