#pragma once

#include <QStringList>

/// The system's own list of mounts. Reading it never touches a file system that is mounted, so it never waits
/// for a server.
namespace MountTable {

/// Every path at which something is mounted (absolute, without links). An entry says that a mount exists, not
/// that its server answers.
QStringList mountPoints();

inline bool lists(const QString& path) {
    return mountPoints().contains(path);
}

} // namespace MountTable
