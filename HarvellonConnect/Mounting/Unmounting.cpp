#include "Mounting/Unmounting.h"

#include "Mounting/MountCheck.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Async.h"
#include "System/Native/MountTable.h"

namespace {
/// Whether the mount exists and its server answers within `limit`.
QCoro::Task<bool> isAnswering(QString mountPoint, std::chrono::milliseconds limit) {
    MountCheck check(mountPoint);
    const std::optional<bool> mounted = co_await check.isMounted(limit);
    co_return mounted.value_or(false);
}
} // namespace

QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, QString mountPoint,
                                              UnmountLimits limits) {
    UnmountOutcome outcome;
    for (const ExternalCommand& command : host.unmountCommands) {
        // Asked just before the mount is detached, because afterwards nobody can ask any more.
        if (outcome.complaint && command == host.forcedUnmount && host.forcedUnmountDetaches)
            outcome.inUse = co_await isAnswering(mountPoint, limits.answer);
        const QStringList arguments = command.argumentsFor(mountPoint);
        try {
            const ShellResult result = co_await shell.run(command.executable, arguments, limits.command);
            if (result.exitCode == 0)
                co_return UnmountOutcome{std::nullopt, outcome.inUse};
            outcome.complaint = result.stderr.trimmed();
        } catch (const ShellError& error) {
            outcome.complaint = error.description();
        }
    }
    outcome.inUse = false;
    co_return outcome;
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

QCoro::Task<bool> servesOpenFiles(std::shared_ptr<SSHFSProcess> process, std::chrono::milliseconds grace) {
    const QFuture<void> end = process->end();
    const bool ended = co_await Async::finishesWithin(end, grace);
    co_return !ended && process->isRunning();
}

QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, UnmountLimits limits) {
    co_await SSHFSProcess::stop(process, limits.grace);
    if (MountTable::lists(mountPoint))
        co_await forceUnmount(host, shell, mountPoint, limits.command);
}
