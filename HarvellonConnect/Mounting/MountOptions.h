#pragma once

#include "Directory/Project.h"
#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

/// Throws MounterError::mountFailed for a project whose domain or path cannot be handed to sshfs safely.
void throwUnlessPlain(const Project& project);

/// `value` escaped for sshfs's option string, where a plain comma would start another option.
QString optionValue(const QString& value);

/// The option string for a project's mount.
QString mountOptions(const HostSystem& host, const Project& project);

/// All arguments for sshfs, which is told to stay in the foreground.
QStringList sshfsArguments(const HostSystem& host, const Project& project, const QString& mountPoint);
