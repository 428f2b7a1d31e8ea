#pragma once

#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Command lines of the user's. They are split at blanks, without a shell; double quotes hold words together.
/// The first word is a program, by its path or as the search path and `folders` have it. Any thread.
namespace OwnCommand {

/// The command that opens `folder`, which takes the place of each `%f` and is the last argument where there
/// is none. Nothing where the program is not there.
[[nodiscard]] std::optional<ExternalCommand> opening(const QString& folder, const QString& line,
                                                     const QStringList& folders);

/// The command that runs `command` in a terminal. A word `%c` stands for its words, `%c` inside a word for
/// all of them as a shell writes them; without `%c` they follow after `-e`. Where `command` is empty, an
/// empty terminal is opened. Nothing where the program is not there.
[[nodiscard]] std::optional<ExternalCommand> inTerminal(const QStringList& command, const QString& line,
                                                        const QStringList& folders);

/// The program that `line` names; empty where it names none.
[[nodiscard]] QString programOf(const QString& line);

} // namespace OwnCommand
