#include "System/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>

namespace {
constexpr int answerLimit = 1000; // milliseconds

/// The name of a local socket is short, whatever the folder's is.
QString nameFor(const QString& folder) {
    const QByteArray hash = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256);
    return QStringLiteral("harvellon-connect-") + QString::fromLatin1(hash.toHex().left(16));
}
} // namespace

SingleInstance::SingleInstance(const QString& folder, QObject* parent)
    : QObject(parent), m_name(nameFor(folder)), m_lock(folder + QStringLiteral("/instance.lock")) {
    QDir().mkpath(folder);
    m_lock.setStaleLockTime(
        0); // a program that runs all day is not stale; a dead one's lock is seen as such anyway
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server.nextPendingConnection())
            socket->deleteLater();
        Q_EMIT startedAgain();
    });
}

bool SingleInstance::claim() {
    const bool locked = m_lock.tryLock();
    if (!locked) {
        QLocalSocket socket;
        socket.connectToServer(m_name);
        const bool answered = socket.waitForConnected(answerLimit);
        // Where no lock file can be written (full disk, read-only home), the socket alone tells of another
        // one: two programs would take each other's mounts down and use each other's refresh token up.
        if (answered || m_lock.error() == QLockFile::LockFailedError)
            return false;
    }
    QLocalServer::removeServer(m_name); // of a process that was killed
    m_server.listen(m_name);
    return true;
}
