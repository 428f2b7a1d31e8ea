#pragma once

#include <QStringList>

/// The system's own list of mounts. It lists live, silent and dead mounts alike, and reading it never blocks
/// on a server. Callable from any thread.
namespace MountTable {

/// Every path at which something is mounted (absolute, without links). An entry says that a mount exists, not
/// that its server answers.
QStringList mountPoints();

/// Whether something is mounted at `path`. Links above the mount point are resolved, as they are in the
/// table; the mount point itself is never accessed.
bool lists(const QString& path);

/// The names of the folders directly below `root` at which something is mounted. Empty when there is no
/// `root`.
QStringList mountedBelow(const QString& root);

} // namespace MountTable
