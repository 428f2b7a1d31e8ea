#pragma once

#include "Directory/Project.h"
#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

/// A value as it stands in sshfs's option text, where a comma would begin another option.
QString optionValue(const QString& value);

/// The option text for a project's mount.
QString mountOptions(const HostSystem& host, const Project& project);

/// All arguments for sshfs, which stays in the foreground.
QStringList sshfsArguments(const HostSystem& host, const Project& project, const QString& mountPoint);
