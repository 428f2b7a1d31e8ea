#pragma once

#include <QString>
#include <QStringList>

/// A command as one line for a POSIX shell, which reads the same words from it, whatever they hold.
[[nodiscard]] QString shellLine(const QStringList& words);
