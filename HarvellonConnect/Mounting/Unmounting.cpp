#include "Mounting/Unmounting.h"

#include "Mounting/MountQuestion.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Native/MountTable.h"

namespace {
constexpr std::chrono::seconds answerLimit{1};

QCoro::Task<bool> answersYes(MountQuestion& question) {
    const std::optional<bool> answer = co_await question.answer(answerLimit);
    co_return answer.value_or(false);
}
} // namespace

QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, QString mountPoint,
                                              std::chrono::milliseconds limit) {
    UnmountOutcome outcome;
    for (const ExternalCommand& command : host.unmountCommands) {
        if (outcome.complaint && command == host.forcedUnmount && host.forcedUnmountDetaches) {
            MountQuestion question(mountPoint);
            outcome.inUse = co_await answersYes(question);
        }
        const QStringList arguments = command.argumentsFor(mountPoint);
        try {
            const ShellResult result = co_await shell.run(command.executable, arguments, limit);
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
        // The mount is still listed then, which is what the callers look at.
    }
}

QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, Patience patience) {
    co_await SSHFSProcess::terminate(process, patience.grace);
    if (MountTable::lists(mountPoint))
        co_await forceUnmount(host, shell, mountPoint, patience.command);
}
