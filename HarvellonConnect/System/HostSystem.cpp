#include "System/HostSystem.h"

#include "System/Logging.h"

#include <QDir>

namespace {
const QStringList sshfsPaths{QStringLiteral("/usr/local/bin/sshfs"),
                             QStringLiteral("/opt/homebrew/bin/sshfs"), QStringLiteral("/usr/bin/sshfs")};
const QString sshClient = QStringLiteral("/usr/bin/ssh");
} // namespace

HostSystem HostSystem::macOS(const QString& homeFolder) {
    HostSystem host;
    host.statusItemHasMenu = false; // the desktop would open it at the primary click, too
    host.homeFolder = homeFolder;
    host.privateFolder = homeFolder + QStringLiteral("/Library/Application Support/HarvellonConnect");
    host.temporaryFolder = QDir::tempPath();
    host.socketFolder = host.temporaryFolder + QStringLiteral("/harvellon-ssh"); // the user's alone there
    host.sshfsCandidates = sshfsPaths;
    host.sshfsSource = SSHFSSource::fuseT;
    host.platformMountOptions = {QStringLiteral("defer_permissions"), QStringLiteral("noappledouble")};
    host.volumeNameOption = QStringLiteral("volname");
    const QString umount = QStringLiteral("/sbin/umount");
    host.forcedUnmount = {umount, {QStringLiteral("-f")}};
    host.unmountCommands = {{QStringLiteral("/usr/sbin/diskutil"), {QStringLiteral("unmount")}},
                            {umount, {}},
                            host.forcedUnmount};
    host.opener = {QStringLiteral("/usr/bin/open"), {}};
    // What a terminal starts counts as a part of it: the system would ask the user, and remember the answer,
    // in the terminal's name.
    host.bundleOpener = {host.opener.executable, {QStringLiteral("-g")}};
    host.secretOpener = host.opener; // opens nothing where no program is registered
    host.editorLaunchers = {
        QStringLiteral("/Applications/Visual Studio Code.app/Contents/Resources/app/bin/code"),
        QStringLiteral("/Applications/Visual Studio Code - Insiders.app/Contents/Resources/app/bin/code")};
    host.editorOpen = {QStringLiteral("/usr/bin/open"),
                       {QStringLiteral("-a"), QStringLiteral("Visual Studio Code")}};
    host.gitCandidates = {QStringLiteral("/opt/homebrew/bin/git"), QStringLiteral("/usr/local/bin/git"),
                          QStringLiteral("/Library/Developer/CommandLineTools/usr/bin/git"),
                          QStringLiteral("/Applications/Xcode.app/Contents/Developer/usr/bin/git")};
    host.terminal = {QStringLiteral("/usr/bin/open"),
                     {QStringLiteral("/System/Applications/Utilities/Terminal.app")}};
    host.programFolders = {QStringLiteral("/Applications"), homeFolder + QStringLiteral("/Applications"),
                           QStringLiteral("/opt/homebrew/bin"), QStringLiteral("/usr/local/bin"),
                           QStringLiteral("/opt/homebrew/opt/mysql-client/bin")};
    host.editors = macOSEditors();
    host.terminals = macOSTerminals();
    host.ssh = sshClient;
    host.browserQuery = {
        QStringLiteral("/usr/bin/osascript"),
        {QStringLiteral("-e"),
         QStringLiteral("tell application \"Google Chrome\" to get URL of active tab of front window")}};
    // Naming a program in "is running" does not start it; telling it something does.
    host.browserCheck = {
        host.browserQuery.executable,
        {QStringLiteral("-e"), QStringLiteral("if application \"Google Chrome\" is not running then error "
                                              "\"Google Chrome ist nicht gestartet.\"")}};
    const QString settings = QStringLiteral("x-apple.systempreferences:");
    const QString privacy = settings + QStringLiteral("com.apple.preference.security?Privacy_");
    host.permissionPages = {
        {Permission::automation, privacy + QStringLiteral("Automation")},
        {Permission::networkVolumes, privacy + QStringLiteral("FilesAndFolders")},
        {Permission::notifications,
         settings + QStringLiteral("com.apple.Notifications-Settings.extension?id=") + applicationIdentifier},
        {Permission::loginItem, settings + QStringLiteral("com.apple.LoginItems-Settings.extension")}};
    // FUSE-T is a server of its own that the system's NFS or SMB client mounts: Finder and the permissions
    // take it for a network volume, and what the client remembers is its own affair.
    host.fuseKinds = {
        {QStringLiteral("FUSE-T"),
         {QStringLiteral("nfs"), QStringLiteral("smbfs")},
         QStringLiteral("fuse-t:/")},
        {QStringLiteral("macFUSE"), {QStringLiteral("macfuse"), QStringLiteral("osxfuse")}, {}}};
    return host;
}

HostSystem HostSystem::linuxDesktop(const QString& homeFolder, const QString& osRelease) {
    HostSystem host;
    host.osRelease = osRelease;
    host.homeFolder = homeFolder;
    host.privateFolder = homeFolder + QStringLiteral("/.local/share/HarvellonConnect");
    host.autostartFile =
        homeFolder + QStringLiteral("/.config/autostart/com.harvellon.HarvellonConnect.desktop");
    // Not /tmp, where a name belongs to whoever takes it first. Editors in a sandbox see the home folder.
    host.temporaryFolder = homeFolder + QStringLiteral("/.cache");
    host.socketFolder = host.privateFolder + QStringLiteral("/ssh"); // where there is no runtime folder
    host.sshfsCandidates = sshfsPaths;
    // attr_timeout: sshfs remembers sizes; with the kernel remembering none, opening a file asks anew.
    // Otherwise a file that has grown on the server meanwhile is read only up to its former size. auto_cache:
    // a file whose size and time are still the same when it is opened again is not read again.
    // negative_timeout: a name that does not exist is asked for several times in a row; longer than a second,
    // and a file that a colleague has just made would be overwritten by programs that look first.
    // cache_timeout: what sshfs remembers, by the name that all its versions know; long enough for names that
    // are read in advance.
    // ControlPath: a connection shared with others would tell nothing about what this mount sends.
    host.platformMountOptions = {QStringLiteral("attr_timeout=0"), QStringLiteral("auto_cache"),
                                 QStringLiteral("negative_timeout=1"), QStringLiteral("cache_timeout=25"),
                                 QStringLiteral("ControlPath=none")};
    host.volumeNameOption = QStringLiteral("fsname");
    host.fuseKinds = {{QStringLiteral("FUSE"), {QStringLiteral("fuse.sshfs")}, {}}};
    const QString fusermount = QStringLiteral("/usr/bin/fusermount3");
    host.forcedUnmount = {fusermount, {QStringLiteral("-u"), QStringLiteral("-z")}};
    host.forcedUnmountDetaches = true;
    host.unmountCommands = {
        {fusermount, {QStringLiteral("-u")}}, {QStringLiteral("/usr/bin/umount"), {}}, host.forcedUnmount};
    host.opener = {QStringLiteral("/usr/bin/xdg-open"), {}};
    // xdg-open hands what it cannot open to the browsers in this variable.
    host.secretOpener = {QStringLiteral("/usr/bin/env"),
                         {QStringLiteral("BROWSER=/bin/false"), host.opener.executable}};
    host.handlerQuery = {QStringLiteral("/usr/bin/xdg-mime"),
                         {QStringLiteral("query"), QStringLiteral("default")}};
    host.editorLaunchers = {QStringLiteral("/usr/bin/code"), QStringLiteral("/snap/bin/code"),
                            QStringLiteral("/var/lib/flatpak/exports/bin/com.visualstudio.code"),
                            QStringLiteral("/usr/bin/code-insiders"), QStringLiteral("/usr/bin/codium")};
    host.gitCandidates = {QStringLiteral("/usr/bin/git"), QStringLiteral("/usr/local/bin/git")};
    host.programFolders = {homeFolder + QStringLiteral("/.local/bin"),
                           homeFolder + QStringLiteral("/.local/share/JetBrains/Toolbox/scripts"),
                           QStringLiteral("/snap/bin"),
                           homeFolder + QStringLiteral("/.local/share/flatpak/exports/bin"),
                           QStringLiteral("/var/lib/flatpak/exports/bin")};
    host.editors = linuxEditors();
    host.terminals = linuxTerminals();
    host.ssh = sshClient;
    return host;
}

QStringList HostSystem::environmentOfGit(const QString& home) {
    return {QStringLiteral("-u"), QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("-u"),
            QStringLiteral("GIT_CONFIG_GLOBAL"), QStringLiteral("HOME=") + home};
}
