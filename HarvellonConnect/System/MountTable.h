#pragma once

#include <QString>

/// The system's own list of mounts. Reading it never touches a file system that is mounted, so it never waits
/// for a server.
namespace MountTable {

/// Whether something is mounted exactly at `path` (absolute, without links). An entry says that a mount
/// exists, not that its server answers.
bool lists(const QString& path);

} // namespace MountTable
