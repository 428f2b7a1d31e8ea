#pragma once

#include "Directory/Project.h"
#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

/// Throws MounterError::mountFailed for a project whose domain or path cannot be handed to sshfs safely.
void throwUnlessPlain(const Project& project);

/// `value` escaped for sshfs's option string, where a plain comma would start another option.
QString optionValue(const QString& value);

/// Who follows the symbolic links of a project.
enum class Links {
    local, ///< this machine, as far as sshfs lets it: links that leave the tree lead nowhere
    server ///< the server, so that links show what they lead to there
};

/// The option string for a project's mount.
QString mountOptions(const HostSystem& host, const Project& project, Links links = Links::local);

/// All arguments for sshfs, which is told to stay in the foreground.
QStringList sshfsArguments(const HostSystem& host, const Project& project, const QString& mountPoint,
                           Links links = Links::local);
