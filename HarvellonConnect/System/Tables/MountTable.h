#pragma once

#include <QList>
#include <QStringList>

/// The system's own list of mounts. It lists live, silent and dead mounts alike, and reading it never blocks
/// on a server. Callable from any thread.
namespace MountTable {

struct Entry {
    QString path;   ///< where it is mounted: absolute, without links
    QString source; ///< what is mounted, as the mount's maker named it
    QString type;   ///< of the file system
};

/// Everything that is mounted. An entry says that a mount exists, not that its server answers.
QList<Entry> entries();

/// The paths of all entries.
QStringList mountPoints();

/// Whether something is mounted at `path`. Links above the mount point are resolved, as they are in the
/// table; the mount point itself is never accessed.
bool lists(const QString& path);

/// The mounts directly below `root`, with the folder's name as their path. Empty when there is no `root`.
QList<Entry> mountedBelow(const QString& root);

} // namespace MountTable
