#pragma once

#include "Mounting/MountLimits.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

class SSHFSProcess;

// The steps of unmounting. They keep no state and need no mounter; `shell` must outlive each call. None of
// them throws. Main thread.

struct UnmountOutcome {
    /// What the last command printed, when none succeeded.
    std::optional<QString> complaint;
    /// The mount was only detached: files are open, and the server answers.
    bool inUse = false;
};

/// Tries the unmount commands in order until one succeeds.
QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, QString mountPoint,
                                              UnmountLimits limits);

/// Forces off whatever is mounted there. The mount table tells whether that worked.
QCoro::Task<> forceUnmount(HostSystem host, Shell& shell, QString mountPoint,
                           std::chrono::milliseconds limit);

/// Whether sshfs is still running after `grace`: after a detaching unmount it ends when the last open file is
/// closed.
QCoro::Task<bool> servesOpenFiles(std::shared_ptr<SSHFSProcess> process, std::chrono::milliseconds grace);

/// Ends sshfs, with SIGKILL if necessary, which frees every process that waits for its answer. Then forces
/// off the mount when it is still listed.
QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, UnmountLimits limits);
