#pragma once

#include "System/Requests/RequestClient.h"

#include <QString>

#include <functional>

/// Starts the program, detached from this terminal and this folder, and waits until it takes requests: 20
/// seconds at most. `goOn` as in RequestClient. Throws RequestError where that comes to nothing.
[[nodiscard]] RequestClient startProgram(const QString& program, const QString& socket,
                                         const std::function<bool(std::chrono::milliseconds)>& goOn);

/// Becomes the program. Returns only where that is not possible.
void becomeProgram(const QString& program);
