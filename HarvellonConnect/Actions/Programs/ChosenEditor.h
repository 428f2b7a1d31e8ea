#pragma once

#include "Actions/ActionContext.h"

#include <QString>

#include <optional>

/// Opens `folder` in the editor with this key of ProgramChoices, which is not empty, and yields its name.
/// Nothing where it is not there any more or does not start, which the user is told. Main thread.
std::optional<QString> openChosenEditor(const ActionContext& context, const QString& key,
                                        const QString& domain, const QString& folder);
