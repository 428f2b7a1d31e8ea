#pragma once

#include "sandbox/Identities.h"

#include <QString>

namespace sandbox {

/// The login's home folder on the server.
QString homeFolder(const QString& treeRoot, const HostedProject& project);

/// What the directory names as the project's path.
QString mountedFolder(const QString& treeRoot, const HostedProject& project);

/// Makes an example site where none exists; existing files stay as they are. Throws std::runtime_error.
void layTree(const QString& treeRoot, const HostedProject& project);

/// The credentials that the site's configuration holds.
QString databaseName(const HostedProject& project);
QString databaseUser(const HostedProject& project);
QString databasePassword(const HostedProject& project);

} // namespace sandbox
