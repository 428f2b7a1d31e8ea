#include "Actions/Database/DatabaseTunnels.h"

#include "System/Async.h"
#include "System/Files/PrivateFolder.h"
#include "System/Ssh/SocketPath.h"
#include "System/Ssh/SshOptions.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QPromise>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <memory>
#include <vector>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds controlLimit = 2s; // of a process of this machine
constexpr int mostPorts = 3;                           // somebody else may take one that was free

enum class Answer { greeting, refusal, nothing };

/// A port that is free now, `wanted` if it is; 0 where there is none.
quint16 freePort(quint16 wanted) {
    QTcpServer server;
    const bool listens = (wanted != 0 && server.listen(QHostAddress::LocalHost, wanted)) ||
                         server.listen(QHostAddress::LocalHost);
    return listens ? server.serverPort() : 0;
}

/// What comes from a port of this machine; a database is the first to speak.
QCoro::Task<Answer> answerOf(quint16 port, std::chrono::milliseconds limit) {
    const auto answer = std::make_shared<QPromise<Answer>>();
    answer->start();
    const auto settle = [answer](Answer kind) {
        if (!answer->future().isFinished()) {
            answer->addResult(kind);
            answer->finish();
        }
    };
    QTcpSocket socket;
    QObject::connect(&socket, &QIODevice::readyRead, &socket, [settle] { settle(Answer::greeting); });
    QObject::connect(&socket, &QAbstractSocket::disconnected, &socket, [settle] { settle(Answer::refusal); });
    QObject::connect(&socket, &QAbstractSocket::errorOccurred, &socket,
                     [settle] { settle(Answer::refusal); });
    socket.connectToHost(QHostAddress::LocalHost, port);
    const QFuture<Answer> future = answer->future();
    const bool answered = co_await Async::finishesWithin(future, limit);
    co_return answered ? future.result() : Answer::nothing;
}

TunnelError failed(const QString& login, const QString& reason) {
    return TunnelError(QStringLiteral("Tunnel zu %1 fehlgeschlagen: %2").arg(login, reason.trimmed()));
}
} // namespace

QCoro::Task<quint16> DatabaseTunnels::open(QString login) {
    while (m_opening.contains(login))
        co_await Async::emission(this, &DatabaseTunnels::settled);
    if (m_closed)
        throw failed(login, QStringLiteral("Das Programm endet."));
    m_opening.insert(login);
    const auto settle = qScopeGuard([this, login] {
        m_opening.remove(login);
        Q_EMIT settled();
    });
    const quint16 port = co_await openAlone(login);
    co_return port;
}

QCoro::Task<quint16> DatabaseTunnels::openAlone(QString login) {
    const std::optional<QString> path = socketFor(login);
    if (!path || !makePrivateFolder(m_host.socketFolder))
        throw failed(login, QStringLiteral("In %1 kann ssh keinen Socket anlegen.").arg(m_host.socketFolder));
    const QString socket = *path;
    const bool isThere = co_await stillLeads(login, socket);
    if (isThere)
        co_return m_ports.value(login);
    co_await end(login, socket);
    const QStringList start = masterArguments(m_host, socket, login, m_limits.unused);
    const ShellResult started = co_await m_shell.run(m_host.ssh, start, m_limits.open);
    if (started.exitCode != 0)
        throw failed(login, started.stderr);
    std::optional<TunnelError> failure;
    try {
        const quint16 port = co_await forward(login, socket);
        m_ports.insert(login, port);
        co_await expectDatabase(login, port);
        if (m_closed)
            throw failed(login, QStringLiteral("Das Programm endet."));
    } catch (const TunnelError& error) {
        failure = error;
    }
    if (failure) {
        co_await end(login, socket);
        throw *failure; // NOLINT(cert-err09-cpp,cert-err61-cpp): no catch block may wait
    }
    co_return m_ports.value(login);
}

/// Only ssh's own word says that the port still belongs to the tunnel.
QCoro::Task<bool> DatabaseTunnels::stillLeads(QString login, QString socket) {
    if (!m_ports.contains(login) || !QFileInfo::exists(socket))
        co_return false;
    const QStringList check{QStringLiteral("-O"), QStringLiteral("check")};
    const ShellResult alive = co_await control(login, socket, check);
    if (alive.exitCode != 0)
        co_return false;
    const Answer answer = co_await answerOf(m_ports.value(login), m_limits.answer);
    co_return answer == Answer::greeting;
}

QCoro::Task<quint16> DatabaseTunnels::forward(QString login, QString socket) {
    ShellResult result;
    for (int attempt = 0; attempt < mostPorts; ++attempt) {
        const quint16 port = freePort(attempt == 0 ? m_ports.value(login) : 0);
        // Without the user's configuration, whose own forwardings would be asked for as well.
        const QStringList request{
            QStringLiteral("-F"),
            QStringLiteral("none"),
            QStringLiteral("-o"),
            QStringLiteral("ExitOnForwardFailure=yes"),
            QStringLiteral("-O"),
            QStringLiteral("forward"),
            QStringLiteral("-L"),
            QStringLiteral("127.0.0.1:%1:127.0.0.1:%2").arg(port).arg(m_limits.databasePort)};
        result = co_await control(login, socket, request);
        if (result.exitCode == 0)
            co_return port;
    }
    throw failed(login, result.stderr);
}

QCoro::Task<> DatabaseTunnels::expectDatabase(QString login, quint16 port) {
    const Answer answer = co_await answerOf(port, m_limits.answer);
    if (answer == Answer::refusal)
        throw failed(login,
                     QStringLiteral("Der Server lässt keine Verbindung zur Datenbank (127.0.0.1:%1) zu.")
                         .arg(m_limits.databasePort));
    if (answer == Answer::nothing)
        throw failed(login, QStringLiteral("Die Datenbank antwortet nicht."));
}

/// Asks the ssh behind `socket` for something.
QCoro::Task<ShellResult> DatabaseTunnels::control(QString login, QString socket, QStringList request) {
    const QStringList arguments = QStringList{QStringLiteral("-S"), socket} + request + QStringList{login};
    const ShellResult result = co_await m_shell.run(m_host.ssh, arguments, controlLimit);
    co_return result;
}

QCoro::Task<> DatabaseTunnels::end(QString login, QString socket) {
    if (!QFileInfo::exists(socket))
        co_return;
    const QStringList exit{QStringLiteral("-O"), QStringLiteral("exit")};
    try {
        co_await control(login, socket, exit);
    } catch (const ShellError&) {
        // It ends by itself when nobody uses it.
    }
    QFile::remove(socket); // of an ssh that was killed
}

QCoro::Task<> DatabaseTunnels::close() {
    m_closed = true;
    std::vector<QCoro::Task<>> endings;
    const QStringList logins = m_ports.keys();
    for (const QString& login : logins) {
        if (const std::optional<QString> socket = socketFor(login))
            endings.push_back(end(login, *socket));
    }
    const QDeadlineTimer deadline(controlLimit);
    const QPointer<DatabaseTunnels> guard(this);
    while (guard && !m_opening.isEmpty() && !deadline.hasExpired()) {
        const std::chrono::milliseconds left{deadline.remainingTime()};
        co_await Async::emission(this, &DatabaseTunnels::settled, left);
    }
    for (QCoro::Task<>& each : endings)
        co_await each;
}

bool DatabaseTunnels::isIdle() const {
    return m_opening.isEmpty() &&
           std::none_of(m_ports.keyBegin(), m_ports.keyEnd(), [this](const QString& login) {
               const std::optional<QString> socket = socketFor(login);
               return socket && QFileInfo::exists(*socket);
           });
}

/// Beside the shared connection's, of which each program of a user with a home of its own has one.
std::optional<QString> DatabaseTunnels::socketFor(const QString& login) const {
    return socketPath(m_host.socketFolder, m_host.privateFolder + QStringLiteral("\ndatabase\n") + login);
}
