#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// What the sshfs probe found out. Advisory: it changes no mount.
struct SSHFSReadiness {
    enum class State { ready, notInstalled, notStarting };
    State state = State::ready;
    QString detail; ///< of notStarting: the reason in German

    bool operator==(const SSHFSReadiness&) const = default;
};

/// The first of the host's candidate paths that is an executable file.
std::optional<QString> sshfsPath(const HostSystem& host);

/// What the output of `sshfs --version` (standard output, then standard error) says.
SSHFSReadiness classifyProbe(const QString& probe);

/// Finds sshfs and starts it once with `--version`. Never throws. Main thread.
QCoro::Task<SSHFSReadiness> diagnoseSSHFS(HostSystem host, Shell& shell);
