#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// Opens `folder` in the editor with this key of ProgramChoices, which is not empty, and yields its name.
/// Nothing where it is not there any more or does not start, which the user is told. `context` outlives the
/// wait. Main thread.
QCoro::Task<std::optional<QString>> openChosenEditor(const ActionContext& context, QString key,
                                                     QString domain, QString folder);
