#pragma once

#include "Mounting/MountSession.h"

#include <QCoroTask>
#include <QList>
#include <QStringList>

#include <chrono>

// What a mount's server is doing, told apart by the bytes that its connection moves. None of these throws.
// Main thread.

enum class ServerState {
    answering, ///< it has answered a question
    slow,      ///< no answer yet, but bytes are moving
    silent,    ///< no answer, and nothing has moved for a while
    lost       ///< sshfs has no connection and says so at once; it tries again at each access
};

/// Asks the server of a mount. `silence`: without answer and traffic for this long the server counts as
/// silent. Takes at least that time when it is silent, and twice as long when it is slow. macOS does not
/// count the traffic, so a slow server counts as silent there.
QCoro::Task<ServerState> serverState(MountSession session, std::chrono::milliseconds silence);

/// Whether data for the server would be lost if the mount ended now: a program has a file open for writing,
/// or the connection has not delivered all it was given. True as well when `limit` passes before the system
/// tells: on macOS it asks the server about each open file.
QCoro::Task<bool> holdsUnsavedData(MountSession mount, std::chrono::milliseconds limit);

/// Whether more than keep-alive messages goes over the mount's connection within `time`. False where the
/// system does not tell.
QCoro::Task<bool> isTransferring(MountSession mount, std::chrono::milliseconds time);

/// The domains of those mounts to which a program is writing: with a file open for writing, or with data that
/// the server has not confirmed. `detached`: mounts out of sight, whose open files nobody can see; any
/// traffic counts there. So does an open file whose server does not answer. Takes no time when there are no
/// mounts, half a second when something is clearly being sent or nothing is open, and some seconds in
/// between, because a program may pause between two writes. Where the system does not tell the traffic, an
/// open file counts.
QCoro::Task<QStringList> writtenDomains(QList<MountSession> mounts, QList<MountSession> detached);

/// How long a server may be silent before its connection is replaced.
struct SilenceLimits {
    std::chrono::milliseconds idle;    ///< when nothing would be lost
    std::chrono::milliseconds writing; ///< when data is under way: after a short loss of the network it is
                                       ///< sent again, at intervals that grow to many seconds
};

/// Asks the server of a mount, and ends the connection when the server stays silent: sshfs makes a new one at
/// the next access. Blocked accesses are free at once, and files that were open get an error. Yields whether
/// the connection was ended. Where the system does not tell the traffic, a mount with unsaved data is left to
/// ssh.
QCoro::Task<bool> renewSilentConnection(MountSession mount, SilenceLimits limits);
