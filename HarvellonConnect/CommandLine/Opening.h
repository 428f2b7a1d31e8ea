#pragma once

#include "Actions/ProjectActions.h"
#include "State/ActivityLog.h"
#include "System/Requests/Request.h"

#include <QUuid>

/// The action behind a target of the command line.
struct Opening {
    HoverTarget target = HoverTarget::vscode;
    bool alternative = false;
    bool needsMount = false;
};

[[nodiscard]] Opening openingOf(OpenTarget target);

/// How an action has ended that tells so in the log alone: by the last line after the entry `last`. Warnings
/// before it are told as well. A null id stands before all entries.
[[nodiscard]] Answer outcomeSince(const ActivityLog& log, const QUuid& last);
