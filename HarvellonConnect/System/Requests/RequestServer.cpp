#include "System/Requests/RequestServer.h"

#include "System/Native/PeerUser.h"
#include "System/Requests/RequestPeer.h"

#include <QLocalSocket>

#include <unistd.h>

RequestServer::RequestServer(RequestLimits limits, QObject* parent) : QObject(parent), m_limits(limits) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &RequestServer::accept);
}

bool RequestServer::listen(const QString& socket) {
    QLocalServer::removeServer(socket); // of a process that was killed
    return m_server.listen(socket);
}

void RequestServer::accept() {
    while (QLocalSocket* const socket = m_server.nextPendingConnection()) {
        const bool ours = userBehind(static_cast<int>(socket->socketDescriptor())) == ::geteuid();
        if (!ours || m_connections >= m_limits.connections) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++m_connections;
        auto* const peer = new RequestPeer(
            socket, [this](QByteArray line) { return answerTo(line); }, m_limits.request, m_limits.reading);
        peer->setParent(this);
        connect(peer, &QObject::destroyed, this, [this] { --m_connections; });
    }
}

QCoro::Task<Answer> RequestServer::answerTo(QByteArray line) {
    try {
        const Request request = Request::parse(line);
        const Handler handler = m_handler;
        if (!handler)
            throw RequestError(ExitStatus::notReady, QStringLiteral("Harvellon Connect startet noch."));
        co_return co_await handler(request);
    } catch (const RequestError& error) {
        co_return Answer{error.exitStatus(), {}, error.description()};
    } catch (const Failure& failure) {
        co_return Answer{ExitStatus::failed, {}, failure.description()};
    } catch (const std::exception& error) {
        co_return Answer{ExitStatus::failed, {}, QString::fromLocal8Bit(error.what())};
    }
}
