#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

class SSHFSProcess;

/// How long each step of taking a mount down may take.
struct Patience {
    std::chrono::milliseconds command; ///< for one unmount command
    std::chrono::milliseconds grace;   ///< for sshfs to end politely
    bool sparesOpenFiles;              ///< whether files in use may keep sshfs alive
};

struct UnmountOutcome {
    std::optional<QString> complaint; ///< what the last command said, when none succeeded
    bool inUse = false; ///< files are open, the server answers, and the mount has gone out of sight only
};

/// A gentle unmount writes what is cached, which takes a moment; a silent server never lets it end.
inline constexpr Patience usualPatience{std::chrono::seconds(3), std::chrono::seconds(1), true};
/// All of it fits into the five seconds that the end of the program may take.
inline constexpr Patience hastyPatience{std::chrono::milliseconds(700), std::chrono::milliseconds(300),
                                        false};

/// Tries the unmount commands in order until one succeeds. `shell` must outlive this, as in what follows.
QCoro::Task<UnmountOutcome> unmountByCommands(HostSystem host, Shell& shell, QString mountPoint,
                                              std::chrono::milliseconds limit);

/// Takes off whatever is mounted there; how that went, only the mount table tells.
QCoro::Task<> forceUnmount(HostSystem host, Shell& shell, QString mountPoint,
                           std::chrono::milliseconds limit);

/// Ends sshfs in any case, which frees whoever waits for its answer, and clears a mount that it leaves
/// behind.
QCoro::Task<> clearLeftovers(HostSystem host, Shell& shell, std::shared_ptr<SSHFSProcess> process,
                             QString mountPoint, Patience patience);
