#pragma once

#include "System/HostSystem.h"
#include "System/Requests/RequestClient.h"

#include <QString>

#include <functional>

/// What starts the program: its file, or where there is an opener of bundles, the opener with the bundle that
/// the file lies in.
struct ProgramStart {
    QString program;
    ExternalCommand bundleOpener;
};

/// Starts the program, detached from this terminal and this folder, and waits until it takes requests: 20
/// seconds at most. `goOn` as in RequestClient. Throws RequestError where that comes to nothing.
[[nodiscard]] RequestClient startProgram(const ProgramStart& start, const QString& socket,
                                         const std::function<bool(std::chrono::milliseconds)>& goOn);

/// Becomes the program, or the opener. Returns only where that is not possible.
void becomeProgram(const ProgramStart& start);
