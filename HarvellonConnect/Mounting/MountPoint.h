#pragma once

#include <QString>

/// Whether `domain` can be one folder below the mount root and one host name for ssh, and nothing else.
bool isPlainDomain(const QString& domain);

/// Makes the folder that a tree is mounted on, and what is missing above it; one that exists is used as it
/// is. Throws MounterError::mountFailed.
void makeMountPoint(const QString& path);

/// Whether the system's table has a mount at `path`: live, silent or dead. Follows links above the mount
/// point, as the table does, and never touches the mount point itself.
bool isListed(const QString& path);
