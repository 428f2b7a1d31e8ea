#pragma once

#include "Mounting/Access/HostKeys.h"
#include "System/Failure.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <optional>

/// The key of a server could not be looked at, or not be entered.
class ServerKeyError : public TextFailure {
  public:
    using TextFailure::TextFailure;
};

/// The keys by which this program's own list knows a server, and the one it presents now.
struct ServerKey {
    QString name; ///< of the server in the list
    QList<HostKey> known;
    HostKey presented;
    QByteArray line; ///< of the list, for `presented`
};

/// Asks the server for its key, over the way that a mount takes, and trusts nothing. `login`:
/// "user@server". Throws ServerKeyError. Main thread; `shell` outlives this.
QCoro::Task<ServerKey> lookAtServerKey(HostSystem host, Shell& shell, QString login);

/// Replaces the server's lines in this program's own list by the one with the presented key; all others
/// stay, and either the whole change is made or none. Throws ServerKeyError. Main thread; `shell` outlives
/// this.
QCoro::Task<> trustServerKey(HostSystem host, Shell& shell, ServerKey key);
