#include "Mounting/Ending/Unmounting.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/MounterError.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/WarmUp/WarmUp.h"
#include "System/Async.h"
#include "System/Tables/MountTable.h"

#include <QDeadlineTimer>

#include <algorithm>

namespace {
constexpr std::chrono::milliseconds writerStep{500};
constexpr std::chrono::milliseconds readersEnd{1'000}; // they wait for one answer; a silent server gives none

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

/// Asked just before the mount is detached, because afterwards nobody can ask any more.
QCoro::Task<> lookBeforeDetaching(UnmountOutcome& outcome, MountSession session,
                                  std::chrono::milliseconds silence) {
    if (!MountTable::lists(session.mountPoint)) { // somebody else has detached it already
        outcome.inUse = session.process->isRunning();
        co_return;
    }
    const ServerState server = co_await serverState(session, silence);
    const bool unsaved = co_await holdsUnsavedData(session, silence);
    outcome.silent = server == ServerState::silent || server == ServerState::lost;
    outcome.inUse = !outcome.silent || unsaved;
}

/// Yields whether something is still being written.
QCoro::Task<bool> waitForWriters(MountSession session, UnmountLimits limits) {
    const QDeadlineTimer deadline(limits.writers);
    for (;;) {
        const std::chrono::milliseconds left(deadline.remainingTime());
        const std::chrono::milliseconds limit = std::max(left, limits.command);
        const bool unsaved = co_await holdsUnsavedData(session, limit);
        if (!unsaved || deadline.hasExpired())
            co_return unsaved;
        co_await Async::sleep(writerStep);
    }
}
} // namespace

QCoro::Task<> endOf(QFuture<UnmountResult> unmount) {
    try {
        co_await unmount;
    } catch (const MounterError&) {
        // Its caller has been told.
    }
}

QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, MountSession session,
                                              UnmountLimits limits) {
    UnmountOutcome outcome;
    const QFuture<void> readers = session.warmUp->cancel();
    co_await Async::finishesWithin(readers, std::min(limits.command, readersEnd));
    for (const ExternalCommand& command : host.unmountCommands) {
        if (outcome.complaint && command == host.forcedUnmount) {
            if (host.forcedUnmountDetaches)
                co_await lookBeforeDetaching(outcome, session, limits.silence);
            else
                outcome.cutOff = co_await waitForWriters(session, limits);
        }
        outcome.complaint = co_await complaintOf(shell, command, session.mountPoint, limits.command);
        if (outcome.complaint)
            continue;
        if (command != host.forcedUnmount && host.forcedUnmountDetaches) {
            // A program that sees other mounts than we do, as in a container, may still use this one.
            const bool ended = co_await Async::finishesWithin(session.process->end(), limits.grace);
            outcome.inUse = !ended;
        }
        break;
    }
    co_return outcome;
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
    if (process->group() == 0)
        co_return; // what is mounted there belongs to somebody else
    co_await SSHFSProcess::stop(process, limits.grace);
    if (MountTable::lists(mountPoint))
        co_await forceUnmount(host, shell, mountPoint, limits.command);
}

QCoro::Task<UnmountResult> endAfterUnmount(HostSystem host, Shell& shell, MountSession session,
                                           UnmountOutcome outcome, UnmountLimits limits,
                                           std::function<bool()> keep) {
    const bool detached = !outcome.complaint || !MountTable::lists(session.mountPoint);
    if (outcome.inUse && detached) {
        const bool transferring = co_await isTransferring(session, limits.grace);
        const bool kept = session.process->isRunning() && keep();
        if (kept && outcome.silent)
            co_return UnmountResult::stalled;
        if (kept)
            co_return transferring ? UnmountResult::writing : UnmountResult::filesOpen;
    }
    co_await clearLeftovers(host, shell, session.process, session.mountPoint, limits);
    co_return outcome.cutOff ? UnmountResult::cutOff : UnmountResult::ended;
}
