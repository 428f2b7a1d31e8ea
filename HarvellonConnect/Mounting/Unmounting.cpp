#include "Mounting/Unmounting.h"

#include "Mounting/MountPoint.h"
#include "Mounting/SSHFSProcess.h"

QCoro::Task<std::optional<QString>> unmountByCommands(HostSystem host, Shell& shell, QString mountPoint,
                                                      std::chrono::milliseconds limit) {
    std::optional<QString> complaint;
    for (const ExternalCommand& command : host.unmountCommands) {
        const QStringList arguments = command.argumentsFor(mountPoint);
        try {
            const ShellResult result = co_await shell.run(command.executable, arguments, limit);
            if (result.exitCode == 0)
                co_return std::nullopt;
            complaint = result.stderr.trimmed();
        } catch (const ShellError& error) {
            complaint = error.description();
        }
    }
    co_return complaint;
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
    if (isListed(mountPoint))
        co_await forceUnmount(host, shell, mountPoint, patience.command);
}
