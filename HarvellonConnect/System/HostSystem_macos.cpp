#include "System/HostSystem.h"

#include <QDir>

HostSystem HostSystem::current() {
    const QString development = qEnvironmentVariable("HARVELLON_HOME");
    HostSystem host = macOS(development.isEmpty() ? QDir::homePath() : development);
    if (!development.isEmpty()) {
        host.preferencesFile = development + QStringLiteral("/preferences.ini");
        host.usesKeyring = false;
        host.bundleOpener = {}; // it would not hand on these variables
        host.gitEnvironment = environmentOfGit(development);
        host.ssh = qEnvironmentVariable("HARVELLON_SSH", host.ssh);
    }
    return host;
}
