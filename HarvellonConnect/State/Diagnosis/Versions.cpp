#include "State/Diagnosis/Versions.h"

#include "Mounting/Setup/FuseVersions.h"
#include "Mounting/Setup/SSHFSReadiness.h"

#include <QCoreApplication>
#include <QSysInfo>

using namespace std::chrono_literals;

namespace {
QCoro::Task<QString> ask(Shell& shell, QString executable, QStringList arguments) {
    try {
        const ShellResult result = co_await shell.run(executable, arguments, 5s);
        if (result.exitCode == Shell::timedOut)
            co_return QStringLiteral("antwortet nicht");
        co_return (result.stdout + result.stderr).trimmed();
    } catch (const ShellError&) {
        co_return QStringLiteral("nicht installiert");
    }
}

QString orMissing(const QString& text) {
    return text.isEmpty() ? QStringLiteral("unbekannt") : text;
}
} // namespace

QCoro::Task<Versions> askVersions(HostSystem host, Shell& shell) {
    Versions versions;
    const auto tell = [&versions](const char* what, const QString& version) {
        versions.lines.append({QString::fromUtf8(what), orMissing(version)});
    };
    tell("Harvellon Connect", QCoreApplication::applicationVersion());
    tell("Qt", QString::fromLatin1(qVersion()));
    tell("System", QSysInfo::prettyProductName() + QLatin1Char(' ') + QSysInfo::currentCpuArchitecture());
    tell("Kern", QSysInfo::kernelType() + QLatin1Char(' ') + QSysInfo::kernelVersion());
    tell("Desktop", qEnvironmentVariable("XDG_CURRENT_DESKTOP"));
    tell("Sitzung", qEnvironmentVariable("XDG_SESSION_TYPE"));
    const QStringList version{QStringLiteral("--version")};
    const QStringList shortVersion{QStringLiteral("-V")};
    QCoro::Task<QString> sshfs =
        ask(shell, sshfsPath(host).value_or(QStringLiteral("/usr/bin/sshfs")), version);
    QCoro::Task<QString> ssh = ask(shell, host.ssh, shortVersion);
    const QString sshfsVersion = co_await sshfs;
    tell("sshfs", sshfsVersion);
    const QString sshVersion = co_await ssh;
    tell("ssh", sshVersion);
    if (host.sshfsSource == SSHFSSource::systemPackage) {
        const QString fusermount = host.forcedUnmount.executable;
        const QString fuse = co_await ask(shell, fusermount, shortVersion);
        tell("FUSE", fuse);
        co_return versions;
    }
    const QString receipts = QStringLiteral("/usr/sbin/pkgutil");
    const QStringList list{QStringLiteral("--pkgs")};
    const QStringList macFuse{QStringLiteral("--pkg-info"),
                              QStringLiteral("io.macfuse.installer.components.core")};
    QCoro::Task<QString> all = ask(shell, receipts, list);
    const QString macFuseReceipt = co_await ask(shell, receipts, macFuse);
    const QString allReceipts = co_await all;
    const QList<InstalledFuse> installed = installedFuse(allReceipts, macFuseReceipt);
    for (const InstalledFuse& fuse : installed)
        versions.lines.append({QStringLiteral("FUSE"), fuse.name + QLatin1Char(' ') + fuse.version});
    versions.warnings = fuseWarnings(installed);
    co_return versions;
}
