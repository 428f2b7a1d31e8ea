#pragma once

#include "Actions/ActionContext.h"

#include <QString>
#include <QStringList>

#include <optional>

/// How the terminal that the user has chosen runs `command`, or opens an empty window where `command` is
/// empty. Nothing where it is not there any more, which the user is told. Main thread.
[[nodiscard]] std::optional<ExternalCommand> chosenTerminal(const ActionContext& context,
                                                            const QStringList& command);

/// How a terminal that is a bundle runs `command`: it opens a script that removes itself. Nothing where the
/// script cannot be written, which the user is told. Main thread.
[[nodiscard]] std::optional<ExternalCommand>
bundledTerminal(const ActionContext& context, const QString& bundle, const QStringList& command);
