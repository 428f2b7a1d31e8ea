#pragma once

#include <QProcess>

#include <cerrno>
#include <sched.h>
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

} // namespace OwnNetwork
