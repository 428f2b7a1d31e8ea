#include "Mounting/Setup/SSHFSReadiness.h"

#include <QFileInfo>

namespace {
constexpr std::chrono::seconds probeLimit{10}; // it prints a few lines; a loader that hangs counts as broken
}

std::optional<QString> sshfsPath(const HostSystem& host) {
    for (const QString& path : host.sshfsCandidates) {
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable())
            return path;
    }
    return std::nullopt;
}

SSHFSReadiness classifyProbe(const QString& probe) {
    using State = SSHFSReadiness::State;
    // The version is tested first, because a working sshfs may print a message of its loader too.
    if (probe.contains(QLatin1String("SSHFS version")) ||
        probe.contains(QLatin1String("FUSE library version")))
        return {State::ready, {}};
    if (probe.contains(QLatin1String("Library not loaded")) ||
        probe.contains(QLatin1String("different Team IDs")) ||
        probe.contains(QLatin1String("dyld"), Qt::CaseInsensitive))
        return {State::notStarting,
                QStringLiteral(
                    "Code-Signatur-Mismatch zwischen sshfs und libfuse (Team IDs stimmen nicht überein).")};
    const QString trimmed = probe.trimmed();
    return {State::notStarting,
            trimmed.isEmpty() ? QStringLiteral("Unbekannter Fehler beim Start von sshfs.") : trimmed};
}

QCoro::Task<SSHFSReadiness> diagnoseSSHFS(HostSystem host, Shell& shell) {
    const std::optional<QString> path = sshfsPath(host);
    if (!path)
        co_return SSHFSReadiness{SSHFSReadiness::State::notInstalled, {}};
    const QStringList arguments{QStringLiteral("--version")};
    const QString executable = *path;
    try {
        const ShellResult result = co_await shell.run(executable, arguments, probeLimit);
        co_return classifyProbe(result.stdout + result.stderr);
    } catch (const ShellError& error) {
        co_return SSHFSReadiness{SSHFSReadiness::State::notStarting, error.description()};
    }
}

QCoro::Task<bool> canFollowLinks(HostSystem host, Shell& shell) {
    const std::optional<QString> path = sshfsPath(host);
    if (!path)
        co_return false;
    const QStringList arguments{QStringLiteral("--help")};
    const QString executable = *path;
    try {
        const ShellResult result = co_await shell.run(executable, arguments, probeLimit);
        const QString help = result.stdout + result.stderr;
        co_return help.contains(QStringLiteral("follow_symlinks"));
    } catch (const ShellError&) {
        co_return false;
    }
}
