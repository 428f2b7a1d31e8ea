#pragma once

#include "Mounting/Access/OfferedKey.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <optional>

/// What ssh has to offer a server.
struct OwnKey {
    std::optional<PublicKey> key; ///< what it offers first
    QString unreadable;  ///< a private key whose public half cannot be told; only where there is no `key`
    QString place;       ///< for a new key; empty where one would take the place of another
    QStringList folders; ///< in which a new key may appear
};

/// Finds the key in the agent and beside the identity files. `login`: "user@server". Never throws, takes a
/// few seconds at most. Main thread; `shell` outlives this.
QCoro::Task<OwnKey> findOwnKey(HostSystem host, Shell& shell, QString login);
