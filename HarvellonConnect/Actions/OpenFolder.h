#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <optional>

/// Opens the root of the mounted tree in the file manager. Logs a warning when the project is not mounted.
QCoro::Task<> openInFinder(ActionContext& context, Project project, bool alternative);

/// Copies the folder that openInFinder opens. Logs a warning when the project is not mounted.
QCoro::Task<> copyFolder(ActionContext& context, Project project, bool alternative);

/// Opens the document folder of the mounted tree in the editor, or the root where there is none. Logs a
/// warning when the project is not mounted.
QCoro::Task<> openInVSCode(ActionContext& context, Project project, bool alternative);

/// Opens `folder` in the editor of `domain` and yields the editor's name. Nothing where it is not there,
/// which the user is told. `context` outlives the wait.
QCoro::Task<std::optional<QString>> openEditor(const ActionContext& context, QString domain, QString folder);

/// Waits for the project's document folder below `mountPoint`, for `budget`, then for the mount point itself,
/// for a second. Yields what can be opened; nothing when neither can be listed. A document folder that is a
/// link which cannot be followed is handed to `offerLinks`. `context` outlives the wait.
QCoro::Task<std::optional<QString>> documentTarget(const ActionContext& context, Project project,
                                                   QString mountPoint, std::chrono::seconds budget);
