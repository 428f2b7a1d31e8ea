#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// The result of `diagnoseSSHFS`. It is a hint for the user and does not affect any mount.
struct SSHFSReadiness {
    enum class State { ready, notInstalled, notStarting };
    State state = State::ready;
    QString detail; ///< the reason, in German; only for notStarting

    bool operator==(const SSHFSReadiness&) const = default;
};

/// The first of the host's candidate paths that is an executable file.
std::optional<QString> sshfsPath(const HostSystem& host);

/// The state that the output of `sshfs --version` (standard output, then standard error) shows.
SSHFSReadiness classifyProbe(const QString& probe);

/// Whether the installed sshfs can let the server follow symbolic links. Never throws. Main thread.
QCoro::Task<bool> canFollowLinks(HostSystem host, Shell& shell);

/// Finds sshfs and starts it once with `--version`. Never throws. Main thread.
QCoro::Task<SSHFSReadiness> diagnoseSSHFS(HostSystem host, Shell& shell);
