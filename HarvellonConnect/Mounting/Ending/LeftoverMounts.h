#pragma once

#include <QString>
#include <QStringList>

/// The names of the folders directly below `root` on which this program, or an earlier run of it, has mounted
/// something. A mount that the user has made there by other means is not among them. Reads the mount table
/// only.
QStringList ownMountsBelow(const QString& root);
