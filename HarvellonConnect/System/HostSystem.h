#pragma once

#include "System/Programs/KnownProgram.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// A program of the desktop by its absolute path, with the arguments that come before ours.
struct ExternalCommand {
    QString executable;
    QStringList arguments;

    /// The whole argument list for a call that names `target` last.
    [[nodiscard]] QStringList argumentsFor(const QString& target) const {
        return arguments + QStringList{target};
    }

    bool operator==(const ExternalCommand&) const = default;
};

/// How a user of the desktop installs sshfs.
enum class SSHFSSource { fuseT, systemPackage };

/// What a desktop lets the user allow or refuse to a program.
enum class Permission { automation, notifications, loginItem, networkVolumes };

/// One kind of FUSE, as the mount table shows it.
struct FuseKind {
    QString name;
    QStringList types;    ///< of its file systems
    QString sourcePrefix; ///< before the name of what is mounted; empty for none
};

/// What differs between the two desktops, as values. Both are made and tested everywhere; code asks this
/// record and never the preprocessor.
struct HostSystem {
    QString homeFolder;
    QString privateFolder;         ///< the folder of this program inside the user's data folder
    QString socketFolder;          ///< for sockets, which must have short paths; made when needed
    QString temporaryFolder;       ///< for generated files that may be deleted at any time; the user's alone
    QString preferencesFile;       ///< empty: where the desktop keeps preferences by itself
    QString autostartFile;         ///< starts the program with the desktop; empty where a service does
    bool statusItemHasMenu = true; ///< otherwise every click is for the panel
    bool usesKeyring = true;       ///< otherwise secrets are kept in a file of the private folder
    /// Addresses of the system's settings, where the user can allow it; empty where programs are not
    /// restricted.
    QMap<Permission, QString> permissionPages;

    SSHFSSource sshfsSource = SSHFSSource::systemPackage;
    QString osRelease; ///< the text of /etc/os-release, which names the distribution; empty on macOS
    QStringList sshfsCandidates;            ///< in order of preference
    QStringList platformMountOptions;       ///< options that only this desktop's sshfs knows
    QString volumeNameOption;               ///< the option that carries the volume's name
    QList<ExternalCommand> unmountCommands; ///< gentle first; the mount point follows the arguments
    ExternalCommand forcedUnmount;          ///< for a stale mount, and the last of `unmountCommands`
    bool forcedUnmountDetaches = false;     ///< files that are open stay usable after it
    QList<FuseKind> fuseKinds;              ///< which one a mount is of is known once it is mounted

    ExternalCommand opener;       ///< opens an address or a folder with the user's own program
    ExternalCommand bundleOpener; ///< starts this program by its bundle; empty where it has none
    ExternalCommand secretOpener; ///< opens an address that holds a password; never in a browser instead
    ExternalCommand handlerQuery; ///< prints the program for a type of address; empty where ssh has one
    QStringList editorLaunchers;  ///< where the editor's `code` command is when the search path has none
    ExternalCommand editorOpen;   ///< opens a target in the editor when no launcher is found; empty where
                                  ///< the desktop would hand the file to any program at all

    QStringList gitCandidates;  ///< in order of preference; none that would only offer to install git
    QStringList gitEnvironment; ///< arguments of `env` before git: where the user's configuration is

    QString ssh;                  ///< the user's own client
    ExternalCommand browserQuery; ///< prints the address of the browser's active tab
    ExternalCommand browserCheck; ///< fails when the query would start the browser; empty where it never does
    ExternalCommand terminal;     ///< opens an empty terminal window; empty when one has to be looked for

    QStringList programFolders;    ///< where the user's programs are, beside the search path
    QList<KnownProgram> editors;   ///< beside VS Code
    QList<KnownProgram> terminals; ///< those that can be chosen

    [[nodiscard]] QString mountRoot() const { return homeFolder + QStringLiteral("/Harvellon"); }

    [[nodiscard]] QString mountPoint(const QString& domain) const {
        return mountRoot() + QLatin1Char('/') + domain;
    }

    [[nodiscard]] QString knownHostsFile() const { return privateFolder + QStringLiteral("/known_hosts"); }

    /// The desktop that this program was built for, with the user's own folders. The environment variable
    /// HARVELLON_HOME takes the place of the home folder, the preferences and the keyring, and HARVELLON_SSH
    /// beside it that of the ssh client (development).
    static HostSystem current();
    static HostSystem macOS(const QString& homeFolder);
    /// `gitEnvironment` for a home folder that is not the one of the process.
    static QStringList environmentOfGit(const QString& home);
    static HostSystem linuxDesktop(const QString& homeFolder, const QString& osRelease = {});
};
