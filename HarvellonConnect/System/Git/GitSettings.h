#pragma once

#include "System/Failure.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

/// git, or the user's configuration of it, does not take a change. Its description is the sentence shown to
/// the user.
class GitError : public TextFailure {
  public:
    using TextFailure::TextFailure;
};

/// What git needs to know in order to work in a mounted project: there is no stable inode and no change time,
/// so every file looks changed, and the files belong to a user of the server.
///
///     the user's configuration ──include.path──▶ git/config: the folders that git may trust
///                                                  └──includeIf "gitdir:<mount root>/"──▶ git/mounts: what
///                                                     git compares
///
/// Both files are ours and lie in the private folder. git reads the trusted folders before it knows its
/// repository, so a condition would keep them from being read; that is why the user's entry has none. All
/// functions run on the main thread.
namespace GitSettings {

/// Whether there is a git on this machine.
[[nodiscard]] bool canBeOn(const HostSystem& host);

/// Whether the user's configuration includes our file. Asks git; no where it does not answer. Never throws.
QCoro::Task<bool> areOn(HostSystem host, Shell& shell);

/// Writes our files and includes them in the user's configuration, once. `trusted` as in `trust`. Throws
/// GitError or ShellError; the user's configuration is unchanged then.
QCoro::Task<> turnOn(HostSystem host, Shell& shell, QStringList trusted);

/// Takes our entry out of the user's configuration and leaves everything else in it as it is. Throws GitError
/// or ShellError.
QCoro::Task<> turnOff(HostSystem host, Shell& shell);

/// Replaces the folders that git trusts, while the settings are on. `trusted`: relative to the mount root.
/// False when they could not be written.
[[nodiscard]] bool trust(const HostSystem& host, const QStringList& trusted);

} // namespace GitSettings
