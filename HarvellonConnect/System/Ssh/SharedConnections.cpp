#include "System/Ssh/SharedConnections.h"

#include "System/Async.h"
#include "System/Files/PrivateFolder.h"
#include "System/Ssh/SocketPath.h"
#include "System/Ssh/SshOptions.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds answerLimit = 2s;
constexpr std::chrono::milliseconds openLimit = 15s;
constexpr std::chrono::milliseconds closeLimit = 2s;
constexpr std::chrono::seconds idleLimit = 60s;
constexpr qint32 sshFailed = 255;

QStringList through(const QString& socket) {
    return {QStringLiteral("-S"), socket, QStringLiteral("-o"), QStringLiteral("ControlMaster=no")};
}

QStringList callArguments(const QString& socket, const QString& login, const QStringList& command) {
    // Without a master ssh would connect by itself; a proxy command that fails prevents that.
    const QStringList onlyThere{QStringLiteral("-o"), QStringLiteral("ProxyCommand=false"),
                                QStringLiteral("-o"), QStringLiteral("RemoteCommand=none"),
                                QStringLiteral("-T"), QStringLiteral("-n")};
    return through(socket) + onlyThere + noForwardings() + QStringList{login} + command;
}
} // namespace

void SharedConnections::open(const QString& login) {
    if (m_closed || m_wanted.contains(login))
        return;
    m_wanted.insert(login);
    settle(login);
}

void SharedConnections::release(const QString& login) {
    if (m_wanted.remove(login))
        settle(login);
}

QCoro::Task<> SharedConnections::close() {
    m_closed = true;
    const QSet<QString> logins = m_wanted;
    for (const QString& login : logins)
        release(login);
    const QPointer<SharedConnections> guard(this);
    const QDeadlineTimer deadline(closeLimit);
    while (guard && !m_working.isEmpty() && !deadline.hasExpired()) {
        const std::chrono::milliseconds left{deadline.remainingTime()};
        co_await Async::emission(this, &SharedConnections::settled, left);
    }
}

QCoro::Task<std::optional<ShellResult>> SharedConnections::run(QString login, QStringList command) {
    if (!m_wanted.contains(login))
        co_return std::nullopt;
    const QPointer<SharedConnections> guard(this);
    const std::optional<QString> socket = socketFor(login);
    if (m_opened.contains(login) && QFileInfo::exists(*socket)) {
        const QStringList arguments = callArguments(*socket, login, command);
        try {
            const ShellResult result = co_await m_shell.run(m_host.ssh, arguments, answerLimit);
            if (result.exitCode != Shell::timedOut && result.exitCode != sshFailed)
                co_return result;
        } catch (const ShellError&) {
            // The caller's own call tells.
        }
    }
    if (guard)
        replace(login);
    co_return std::nullopt;
}

QCoro::Task<QStringList> SharedConnections::answering(QString login) {
    const std::optional<QString> socket = socketFor(login);
    const QStringList nothing{QStringLiteral("true")};
    const std::optional<ShellResult> answer = co_await run(login, nothing);
    co_return answer ? through(*socket) : QStringList();
}

/// Two programs of one user, each with a home of its own, have masters of their own.
std::optional<QString> SharedConnections::socketFor(const QString& login) const {
    return socketPath(m_host.socketFolder, m_host.privateFolder + QLatin1Char('\n') + login);
}

void SharedConnections::replace(const QString& login) {
    if (!m_working.contains(login))
        settle(login);
}

/// One at a time for each login; what has changed meanwhile is seen to afterwards.
QCoro::Task<> SharedConnections::settle(QString login) {
    m_changed.insert(login);
    if (m_working.contains(login))
        co_return;
    m_working.insert(login);
    const QPointer<SharedConnections> guard(this);
    while (m_changed.remove(login)) {
        co_await work(login);
        if (!guard)
            co_return;
    }
    m_working.remove(login);
    if (m_working.isEmpty())
        Q_EMIT settled();
}

QCoro::Task<> SharedConnections::work(QString login) {
    const QPointer<SharedConnections> guard(this);
    const std::optional<QString> socket = socketFor(login);
    m_opened.remove(login);
    if (!socket || !makePrivateFolder(m_host.socketFolder))
        co_return;
    if (QFileInfo::exists(*socket)) {
        const QStringList stop =
            through(*socket) + QStringList{QStringLiteral("-O"), QStringLiteral("stop"), login};
        co_await ssh(stop, answerLimit);
        QFile::remove(*socket); // of a master that was killed, or stands still itself
    }
    if (!guard || !m_wanted.contains(login))
        co_return;
    const QStringList start = masterArguments(m_host, *socket, login, idleLimit);
    const bool opened = co_await ssh(start, openLimit);
    if (guard && opened)
        m_opened.insert(login);
}

QCoro::Task<bool> SharedConnections::ssh(QStringList arguments, std::chrono::milliseconds limit) {
    try {
        const ShellResult result = co_await m_shell.run(m_host.ssh, arguments, limit);
        co_return result.exitCode == 0;
    } catch (const ShellError&) {
        co_return false;
    }
}
