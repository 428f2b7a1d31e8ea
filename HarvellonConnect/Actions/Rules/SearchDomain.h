#pragma once

#include <QString>

#include <optional>

/// The host that a browser's address names, without a leading "www."; its letters stay as they are.
std::optional<QString> searchDomain(const QString& urlText);
