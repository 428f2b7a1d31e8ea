#pragma once

#include <optional>
#include <sys/types.h>

/// The user behind the other end of a local socket, as the kernel knows him since the connection was made.
/// Any thread.
[[nodiscard]] std::optional<uid_t> userBehind(int socket);
