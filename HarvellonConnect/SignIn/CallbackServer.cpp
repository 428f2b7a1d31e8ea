#include "SignIn/CallbackServer.h"

#include "SignIn/CallbackRequest.h"
#include "SignIn/OAuthError.h"
#include "System/Logging.h"

#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

namespace {
constexpr qint64 largestRequest = 8192;
constexpr std::chrono::seconds connectionLimit{5}; // a browser may read slowly, or never close
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
    end({true, {}});
}

void CallbackServer::end(const Outcome& outcome) {
    if (!m_server.isListening())
        return; // the login already has its outcome
    m_server.close();
    Q_EMIT ended(outcome);
}

void CallbackServer::accept() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        socket->setParent(nullptr); // the answer outlives this server
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QTimer::singleShot(connectionLimit, socket, &QObject::deleteLater);
        // Browsers open connections in advance that never carry a request; only data counts.
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
    }
}

void CallbackServer::answer(QTcpSocket* socket) {
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    const QByteArray request = socket->read(largestRequest);
    if (request.isEmpty())
        return;

    // Closing with unread input resets the connection, and the browser loses the page: shut down the sending
    // side only, and read until the browser has closed its own.
    connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
    socket->readAll();
    connect(socket, &QTcpSocket::bytesWritten, socket, [socket] {
        if (socket->bytesToWrite() == 0)
            ::shutdown(static_cast<int>(socket->socketDescriptor()), SHUT_WR);
    });
    socket->write(m_answer);
    socket->flush();

    end({false, queryOf(request)});
}
