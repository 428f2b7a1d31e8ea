#pragma once

#include <QString>

/// How far an ssh of ours came on its way into a server.
enum class AccessStep {
    works,
    nameUnknown,
    unreachable,
    hostKeyChanged,
    hostKeyUnknown,
    noKey,      ///< there was none to offer
    keyRefused, ///< the server knows none of the keys that were offered
    keyLocked,  ///< the server knows a key that could not sign
    noFiles,    ///< logged in, but the server offers no sftp
    unclear
};

/// What the log of such an ssh tells.
struct AccessFinding {
    AccessStep step = AccessStep::unclear;
    QString sentence; ///< for the user, one line

    [[nodiscard]] bool concernsHostKey() const {
        return step == AccessStep::hostKeyChanged || step == AccessStep::hostKeyUnknown;
    }
};

/// Reads the log of `ssh -v` that has ended; `succeeded`: with exit code 0. `domain`: as the user knows the
/// server. Any thread.
[[nodiscard]] AccessFinding readAccessLog(const QString& log, bool succeeded, const QString& domain);

/// Whether the ssh that writes this log waits for a signature: the server has accepted a key, and neither its
/// owner (an agent, a security key) nor the server has said anything since.
[[nodiscard]] bool waitsForSignature(const QString& log);
