#pragma once

#include <QString>

/// Which files the user's programs have open. Reads the system's tables and never accesses the files. Any
/// thread; a call takes some milliseconds.
namespace OpenFiles {

/// Whether a program of this user has a file below `folder` (absolute, without links) open for writing.
bool anyWrittenBelow(const QString& folder);

} // namespace OpenFiles
