#pragma once

#include <QString>

/// Which files the user's programs have open, as the system's tables tell. Any thread but the main one: a
/// call takes some milliseconds, but on macOS as long as a silent server does not answer when a file of its
/// mount is open.
namespace OpenFiles {

/// Whether a program of this user has a file below `folder` (absolute, without links) open for writing.
bool anyWrittenBelow(const QString& folder);

} // namespace OpenFiles
