#include "SignIn/CallbackServer.h"

#include "SignIn/CallbackRequest.h"
#include "SignIn/OAuthError.h"
#include "System/Logging.h"

#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

namespace {
constexpr qint64 largestRequest = 8192;
constexpr std::chrono::seconds patience{5}; ///< for a browser that is slow to read or never closes
} // namespace

CallbackServer::CallbackServer(QByteArray answer, QObject* parent)
    : QObject(parent), m_answer(std::move(answer)) {
    connect(&m_server, &QTcpServer::newConnection, this, &CallbackServer::accept);
}

quint16 CallbackServer::start() {
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        throw OAuthError(OAuthError::Case::listenerFailed, m_server.errorString());
    if (m_server.serverPort() == 0)
        throw OAuthError(OAuthError::Case::listenerFailed, QStringLiteral("Kein Port zugewiesen (Port 0)."));
    qCInfo(lcOAuth).noquote().nospace() << "Callback-Server gestartet auf Port " << m_server.serverPort();
    return m_server.serverPort();
}

void CallbackServer::cancel() {
    m_server.close();
}

void CallbackServer::accept() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        socket->setParent(nullptr); // the answer outlives this server
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QTimer::singleShot(patience, socket, &QObject::deleteLater);
        // Browsers open connections in advance; those bring no data and count for nothing.
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
    }
}

void CallbackServer::answer(QTcpSocket* socket) {
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    const QByteArray request = socket->read(largestRequest);
    if (request.isEmpty())
        return;

    // Closing with unread input would reset the connection, and the browser would lose the page: end our side
    // only, and read on until the browser has closed its own.
    connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
    socket->readAll();
    connect(socket, &QTcpSocket::bytesWritten, socket, [socket] {
        if (socket->bytesToWrite() == 0)
            ::shutdown(static_cast<int>(socket->socketDescriptor()), SHUT_WR);
    });
    socket->write(m_answer);
    socket->flush();

    if (!m_server.isListening())
        return; // a second request: the login already has its callback
    cancel();
    Q_EMIT received(queryOf(request));
}
