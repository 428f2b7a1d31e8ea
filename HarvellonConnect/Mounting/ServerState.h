#pragma once

#include "Mounting/MountSession.h"

#include <QCoroTask>
#include <QList>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

// What a mount's server is doing, told apart by the bytes that its connection moves. None of these throws.
// Main thread.

enum class ServerState {
    answering, ///< it has answered a question
    slow,      ///< no answer yet, but bytes are moving
    silent     ///< no answer, and nothing has moved for a while
};

/// Asks the server of a mount. `silence`: without answer and traffic for this long the server counts as
/// silent. Takes at most that time when it is silent, and about five seconds when it is slow. macOS does not
/// count the traffic, so a slow server counts as silent there.
QCoro::Task<ServerState> serverState(MountSession session, std::chrono::milliseconds silence);

/// Whether data for the server would be lost if the mount ended now: a program has a file open for writing,
/// or the connection has not delivered all it was given.
QCoro::Task<bool> holdsUnsavedData(MountSession mount);

/// The domains of those mounts that send data now, or receive it, with nothing between keep-alive messages
/// and single questions counted. Watches them for `time`; takes none when there are no mounts. Where the
/// system does not tell the traffic, every mount counts.
QCoro::Task<QStringList> transferringDomains(QList<MountSession> mounts, std::chrono::milliseconds time);

/// The domains of those mounts to which a program is writing. Takes about half a second when there are
/// mounts.
QCoro::Task<QStringList> writtenDomains(QList<MountSession> mounts);

/// Asks all servers at once, and ends the connection of each mount whose server stays silent for `silence`:
/// sshfs makes a new one at the next access. Blocked accesses are free at once, and files that were open get
/// an error. Yields the domains of these mounts.
QCoro::Task<QStringList> renewSilentConnections(QList<MountSession> mounts,
                                                std::chrono::milliseconds silence);
