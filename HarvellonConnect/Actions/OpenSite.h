#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>

/// Opens the site in the browser, or its back end as the alternative. Logs a
/// warning when the domain is no name of a server, as what follows.
QCoro::Task<> openSite(ActionContext& context, Project project, bool alternative);

/// Opens a shell on the project's server: in the terminal that the user has chosen, else with the program for
/// ssh addresses, else in a terminal.
QCoro::Task<> openShell(ActionContext& context, Project project, bool alternative);

/// Copies the address that openSite opens.
QCoro::Task<> copySiteAddress(ActionContext& context, Project project, bool alternative);

/// Copies the command that openShell runs in a terminal, as a line for a shell. It makes a connection of its
/// own, because it may be used when no other is left.
QCoro::Task<> copyShellCommand(ActionContext& context, Project project, bool alternative);
