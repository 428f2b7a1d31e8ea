#include "Mounting/Ending/KeptMounts.h"

#include "Mounting/SSHFSProcess.h"

#include <algorithm>

void KeptMounts::keep(const MountSession& session) {
    m_sessions.append(session);
    const SSHFSProcess* const kept = session.process.get();
    // Queued, because removing the last reference deletes the process that emits the signal.
    connect(
        kept, &SSHFSProcess::ended, this,
        [this, kept, domain = session.domain](qint32 exitCode) {
            m_sessions.removeIf([kept](const MountSession& each) { return each.process.get() == kept; });
            Q_EMIT ended(domain, exitCode);
        },
        Qt::QueuedConnection);
}

bool KeptMounts::contains(const QString& domain) const {
    return std::any_of(m_sessions.begin(), m_sessions.end(),
                       [&domain](const MountSession& each) { return each.domain == domain; });
}
