#pragma once

#include <QString>

#include <optional>

/// Makes `folder` where it is missing, and tells whether only this user can put something there: the folder
/// is no link, has mode 0700, and belongs to the user, and so does the folder above, which nobody else can
/// write.
[[nodiscard]] bool makeSocketFolder(const QString& folder);

/// The path of a socket in `folder`, short and of the same length for every `name`. Nothing where it would be
/// too long for a socket that ssh makes, or holds a character that ssh or a terminal may read as more than
/// that.
[[nodiscard]] std::optional<QString> socketPath(const QString& folder, const QString& name);
