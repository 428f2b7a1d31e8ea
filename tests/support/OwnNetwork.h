#pragma once

#include <QProcess>

#include <cerrno>
#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

/// A network that only the test program sees and may change.
namespace OwnNetwork {

using namespace Qt::StringLiterals;

/// Moves this process to an empty network of its own, in which it may change everything. False for a user who
/// may not; errno tells why. Only possible while there is one thread.
inline bool enterOwnNetwork() {
    return ::unshare(CLONE_NEWNET) == 0;
}

/// Runs `ip` with these words. False when it fails.
inline bool ip(const QString& words) {
    return QProcess::execute(u"ip"_s, words.split(u' ')) == 0;
}

/// Runs all commands in one process, which is much faster.
inline bool ipBatch(const QStringList& commands) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(u"ip"_s, {u"-force"_s, u"-batch"_s, u"-"_s});
    process.write(commands.join(u'\n').toUtf8() + '\n');
    process.closeWriteChannel();
    return process.waitForFinished() && process.exitCode() == 0;
}

/// Whether the interface v0 is up and connected.
inline bool isRunning() {
    QProcess process;
    process.start(u"ip"_s, u"-o link show v0"_s.split(u' '));
    return process.waitForFinished() && process.readAll().contains("state UP");
}

/// Hears all that the kernel says, so that a silent monitor proves something.
class Witness {
  public:
    Witness() : m_socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups =
            RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
        if (::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            qFatal("no witness");
    }

    ~Witness() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Witness)

    bool hasHeard() const { return peek() > 0; }

  private:
    ssize_t peek() const {
        char byte = 0;
        return ::recv(m_socket, &byte, sizeof byte, MSG_PEEK);
    }

    int m_socket;
};

} // namespace OwnNetwork
