#pragma once

#include "Mounting/MountLimits.h"
#include "Mounting/MountSession.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

// The steps of unmounting. They keep no state and need no mounter; `shell` must outlive each call. None of
// them throws. Main thread.

struct UnmountOutcome {
    /// What the last command printed, when none succeeded.
    std::optional<QString> complaint;
    /// The mount was only detached: files are open, and the server is not silent.
    bool inUse = false;
    /// A program was writing, and the server was silent.
    bool cutOff = false;
};

/// Tries the unmount commands in order until one succeeds. Before a detaching one it asks the server whether
/// open files can still be served.
QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, MountSession session,
                                              UnmountLimits limits);

/// Tries the commands that end no open file, in order. Yields whether one succeeded.
QCoro::Task<bool> unmountGently(HostSystem host, Shell& shell, QString mountPoint,
                                std::chrono::milliseconds limit);

/// Forces off whatever is mounted there. The mount table tells whether that worked.
QCoro::Task<> forceUnmount(HostSystem host, Shell& shell, QString mountPoint,
                           std::chrono::milliseconds limit);

/// Ends sshfs, with SIGKILL if necessary, which frees every process that waits for its answer. Then forces
/// off the mount when it is still listed.
QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, UnmountLimits limits);
