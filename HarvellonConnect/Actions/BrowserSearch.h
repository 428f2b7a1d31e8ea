#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// The domain of the browser's active tab. Logs what was found, or why nothing was. `context` outlives the
/// wait. Main thread.
QCoro::Task<std::optional<QString>> domainOfActiveTab(const ActionContext& context);
