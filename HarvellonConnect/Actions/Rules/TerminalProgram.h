#pragma once

#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The arguments of a terminal program after which the command follows.
QStringList terminalArguments(const QString& executable);

/// The user's terminal program, found the way desktops do: xdg-terminal-exec, the TERMINAL variable, the
/// alternatives system's choice, then the known ones. `searchPath`: folders in order. Nothing when there is
/// none.
std::optional<ExternalCommand> terminalProgram(const QStringList& searchPath, const QString& preferred);
