#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// What a browser query has yielded.
struct ActiveTab {
    std::optional<QString> domain;
    bool isForbidden = false; ///< the system does not let us ask the browser
};

/// Asks for the domain of the browser's active tab, without starting the browser. Logs what was found, or why
/// nothing was. `context` outlives the wait. Main thread.
QCoro::Task<ActiveTab> domainOfActiveTab(const ActionContext& context);
