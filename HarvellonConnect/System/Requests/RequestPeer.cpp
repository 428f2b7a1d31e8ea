#include "System/Requests/RequestPeer.h"

#include "System/Requests/Request.h"

#include <QPointer>

RequestPeer::RequestPeer(QLocalSocket* socket, AnswerTo answerTo, std::chrono::milliseconds requestLimit,
                         std::chrono::milliseconds readingLimit)
    : m_socket(socket), m_answerTo(std::move(answerTo)), m_readingLimit(readingLimit) {
    m_socket->setParent(this);
    m_socket->setReadBufferSize(Request::longest + 1); // what follows stays with the client
    m_limit.setSingleShot(true);
    m_limit.callOnTimeout(m_socket, &QLocalSocket::abort);
    m_limit.start(requestLimit);
    connect(m_socket, &QLocalSocket::readyRead, this, &RequestPeer::read);
    connect(m_socket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
    read();
}

void RequestPeer::read() {
    if (m_asked)
        return;
    m_line += m_socket->read(Request::longest + 1 - m_line.size());
    const qsizetype end = m_line.indexOf('\n');
    if (end < 0 && m_line.size() <= Request::longest)
        return;
    if (end >= 0)
        m_line.truncate(end);
    m_asked = true;
    m_limit.stop();
    answer();
}

QCoro::Task<> RequestPeer::answer() {
    const QPointer<RequestPeer> guard(this);
    const QByteArray line = m_line;
    const AnswerTo answerTo = m_answerTo;
    const Answer outcome = co_await answerTo(line);
    if (!guard || m_socket->state() != QLocalSocket::ConnectedState)
        co_return;
    m_socket->write(outcome.toLine());
    connect(m_socket, &QLocalSocket::bytesWritten, &m_limit, [this] { m_limit.start(m_readingLimit); });
    m_limit.start(m_readingLimit);
    m_socket->disconnectFromServer(); // when all is written
}
