#include "Mounting/Unmounting.h"

#include "Mounting/SSHFSProcess.h"
#include "Mounting/ServerState.h"
#include "System/Async.h"
#include "System/Tables/MountTable.h"

namespace {
/// Nothing when the command succeeded, else what it printed.
QCoro::Task<std::optional<QString>> complaintOf(Shell& shell, ExternalCommand command, QString mountPoint,
                                                std::chrono::milliseconds limit) {
    const QStringList arguments = command.argumentsFor(mountPoint);
    try {
        const ShellResult result = co_await shell.run(command.executable, arguments, limit);
        co_return result.exitCode == 0 ? std::nullopt : std::optional(result.stderr.trimmed());
    } catch (const ShellError& error) {
        co_return error.description();
    }
}
} // namespace

QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, MountSession session,
                                              UnmountLimits limits) {
    UnmountOutcome outcome;
    for (const ExternalCommand& command : host.unmountCommands) {
        // Asked just before the mount is detached, because afterwards nobody can ask any more.
        if (outcome.complaint && command == host.forcedUnmount && host.forcedUnmountDetaches) {
            const ServerState server = co_await serverState(session, limits.silence);
            outcome.inUse = server != ServerState::silent;
            if (!outcome.inUse) {
                outcome.cutOff = co_await holdsUnsavedData(session);
            }
        }
        outcome.complaint = co_await complaintOf(shell, command, session.mountPoint, limits.command);
        if (!outcome.complaint)
            co_return outcome;
    }
    co_return UnmountOutcome{outcome.complaint};
}

QCoro::Task<bool> unmountGently(HostSystem host, Shell& shell, QString mountPoint,
                                std::chrono::milliseconds limit) {
    for (const ExternalCommand& command : host.unmountCommands) {
        if (command == host.forcedUnmount)
            continue;
        const std::optional<QString> complaint = co_await complaintOf(shell, command, mountPoint, limit);
        if (!complaint)
            co_return true;
    }
    co_return false;
}

QCoro::Task<> forceUnmount(HostSystem host, Shell& shell, QString mountPoint,
                           std::chrono::milliseconds limit) {
    const QStringList arguments = host.forcedUnmount.argumentsFor(mountPoint);
    try {
        co_await shell.run(host.forcedUnmount.executable, arguments, limit);
    } catch (const ShellError&) {
        // The mount stays in the mount table then, where the callers look.
    }
}

QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, UnmountLimits limits) {
    co_await SSHFSProcess::stop(process, limits.grace);
    if (MountTable::lists(mountPoint))
        co_await forceUnmount(host, shell, mountPoint, limits.command);
}
