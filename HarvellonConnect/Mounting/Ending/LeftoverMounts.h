#pragma once

#include "System/HostSystem.h"
#include "System/Tables/MountTable.h"

#include <QStringList>

#include <optional>

/// The kind of FUSE that `mount` is of; nothing for another file system.
[[nodiscard]] std::optional<FuseKind> fuseOf(const HostSystem& host, const MountTable::Entry& mount);

/// Whether this program, or an earlier run of it, has made `mount`, whose path is the name of its folder
/// alone.
[[nodiscard]] bool isOwnMount(const HostSystem& host, const MountTable::Entry& mount);

/// The names of the folders directly below the mount root on which this program, or an earlier run of it, has
/// mounted something. A mount that the user has made there by other means is not among them. Reads the mount
/// table only.
QStringList ownMountsBelow(const HostSystem& host);
