#pragma once

#include "Mounting/MountLimits.h"
#include "Mounting/MountSession.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QFuture>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

// The steps of unmounting. They keep no state and need no mounter; `shell` must outlive each call. None of
// them throws. Main thread.

/// Waits for an unmount, however it goes.
QCoro::Task<> endOf(QFuture<UnmountResult> unmount);

struct UnmountOutcome {
    /// What the last command printed, when none succeeded.
    std::optional<QString> complaint;
    /// Ending sshfs would cut off programs that the server still serves, or data that is under way.
    bool inUse = false;
    bool silent = false; ///< the server was, when it was asked
    bool cutOff = false; ///< the forced command has cut off a program that was writing
};

/// Tries the unmount commands in order until one succeeds. Before a forced command that detaches, it asks the
/// server whether open files can still be served; before one that cuts programs off, it waits for writing to
/// end.
QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, MountSession session,
                                              UnmountLimits limits);

/// Tries the commands that end no open file, in order. Yields whether one succeeded.
QCoro::Task<bool> unmountGently(HostSystem host, Shell& shell, QString mountPoint,
                                std::chrono::milliseconds limit);

/// Forces off whatever is mounted there. The mount table tells whether that worked.
QCoro::Task<> forceUnmount(HostSystem host, Shell& shell, QString mountPoint,
                           std::chrono::milliseconds limit);

/// Ends sshfs, with SIGKILL if necessary, which frees every process that waits for its answer. Then forces
/// off the mount when it is still listed. Does nothing for an sshfs that was never started.
QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, UnmountLimits limits);

/// Ends sshfs after the unmount commands, as `clearLeftovers` does; or, while files of a detached mount are
/// in use, hands it to `keep`, which says whether it takes over. Ending it then would cut off a file being
/// written.
QCoro::Task<UnmountResult> endAfterUnmount(HostSystem host, Shell& shell, MountSession session,
                                           UnmountOutcome outcome, UnmountLimits limits,
                                           std::function<bool()> keep);
