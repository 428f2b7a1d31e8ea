#include "System/SingleInstance.h"

#include "System/HostSystem.h"
#include "System/Logging.h"
#include "System/Requests/RequestClient.h"
#include "System/Requests/RequestSocket.h"

#include <QDir>

SingleInstance::SingleInstance(const HostSystem& host)
    : m_lock(host.privateFolder + QStringLiteral("/instance.lock")) {
    QDir().mkpath(host.privateFolder);
    m_socket = requestSocket(host);
    m_lock.setStaleLockTime(
        0); // a program that runs all day is not stale; a dead one's lock is seen as such anyway
}

bool SingleInstance::claim() {
    const bool locked = m_lock.tryLock();
    if (!locked) {
        const bool answered = showRunning();
        // Where no lock file can be written (full disk, read-only home), the socket alone tells of another
        // one: two programs would take each other's mounts down and use each other's refresh token up.
        if (answered || m_lock.error() == QLockFile::LockFailedError)
            return false;
    }
    if (!m_socket || !m_requests.listen(*m_socket))
        qCWarning(lcDesktop, "No socket for the command line in a private folder");
    return true;
}

bool SingleInstance::showRunning() const {
    if (!m_socket)
        return false;
    std::optional<RequestClient> running = RequestClient::to(*m_socket);
    return running && running->send(Request{.command = Request::Command::show});
}
