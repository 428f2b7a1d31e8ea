#include "System/HostSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <unistd.h>

HostSystem HostSystem::current() {
    const QString development = qEnvironmentVariable("HARVELLON_HOME");
    QFile release(QStringLiteral("/etc/os-release"));
    const QString osRelease =
        release.open(QIODevice::ReadOnly) ? QString::fromUtf8(release.readAll()) : QString();
    HostSystem host = linuxDesktop(development.isEmpty() ? QDir::homePath() : development, osRelease);
    // Without the variable, as in a job of cron, the folder is still the one of the desktop.
    const QString usual = QStringLiteral("/run/user/%1").arg(::geteuid());
    const QString runtimeFolder =
        qEnvironmentVariable("XDG_RUNTIME_DIR", QDir(usual).exists() ? usual : QString());
    if (QDir::isAbsolutePath(runtimeFolder))
        host.socketFolder = runtimeFolder + QStringLiteral("/harvellon-ssh");
    if (development.isEmpty()) {
        host.privateFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                             QStringLiteral("/HarvellonConnect");
        host.temporaryFolder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
        host.autostartFile = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                             QStringLiteral("/autostart/com.harvellon.HarvellonConnect.desktop");
    } else {
        host.preferencesFile = development + QStringLiteral("/preferences.ini");
        host.usesKeyring = false;
        host.gitEnvironment = environmentOfGit(development);
        host.ssh = qEnvironmentVariable("HARVELLON_SSH", host.ssh);
    }
    host.browserQuery = {QCoreApplication::applicationDirPath() + QStringLiteral("/harvellon-browser-tab"),
                         {}};
    return host;
}
