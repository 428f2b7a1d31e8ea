#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>

/// Asks the site for the page that empties its cache, at most 10 seconds. Every outcome is a line of the
/// activity log.
QCoro::Task<> clearCache(ActionContext& context, Project project, bool alternative);
