#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>

/// Reads the site's configuration from the server over ssh, at most 30 seconds, and opens its database in the
/// database client, in the way that the user has chosen. Reads nothing where the desktop has no client. Every
/// outcome is a line of the activity log.
QCoro::Task<> openDatabase(ActionContext& context, Project project, bool alternative);
