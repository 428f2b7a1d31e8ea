#pragma once

#include <QString>

#include <optional>

struct HostSystem;

/// Where the running program takes requests: a socket in a folder that only this user can enter, which is
/// made. Nothing where there can be no such folder. Any thread.
[[nodiscard]] std::optional<QString> requestSocket(const HostSystem& host);
