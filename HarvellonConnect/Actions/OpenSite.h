#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>

/// Opens the site in the browser, or its back end as the alternative. Logs nothing.
QCoro::Task<> openSite(ActionContext& context, Project project, bool alternative);

/// Opens a shell on the project's server: in the terminal that the user has chosen, else with the program for
/// ssh addresses, else in a terminal. Logs a
/// warning when the domain is no name of a server.
QCoro::Task<> openShell(ActionContext& context, Project project, bool alternative);
