#include "sandbox/ssh/SshDaemon.h"

#include "sandbox/PrivateFile.h"

#include <QFileInfo>
#include <QHostAddress>
#include <QTcpSocket>
#include <QThread>

#include <stdexcept>
#include <unistd.h>

namespace sandbox {

namespace {
const QString sshdProgram = QStringLiteral("/usr/sbin/sshd");
constexpr int readinessProbes = 300;
constexpr unsigned long probePause = 10; // milliseconds
constexpr int endLimit = 5000;           // milliseconds

// sshd runs below a shell whose standard input closes when this process ends, however it ends; the shell
// then kills sshd. Each line the shell reads is a signal for sshd and its sessions. Sessions leave sshd's
// process group and may lose it as parent, but all hold the log file open, so that is how they are found. It
// is compared through a descriptor: another sandbox in the same folder puts a new log in its place. No other
// program's files are looked at: one of them may lie on a mount that does not answer. sshd itself is also
// known by its number: it may not have opened the log yet, nor be called sshd. Its end is repeated until
// nothing is found, because sessions may begin meanwhile.
const QString watchScript = QStringLiteral(R"(
log=$1
shift
exec 3<"$log"
each() {
    found=1
    for process in /proc/[0-9]*; do
        read -r name <"$process/comm" || continue
        case $name in sshd*) ;; *) continue ;; esac
        for file in "$process"/fd/*; do
            [ "$file" -ef /proc/$$/fd/3 ] && kill -s "$1" "${process#/proc/}" && found=0 && break
        done
    done
    return $found
}
end() {
    kill -s KILL $!
    while each KILL; do sleep 0.02; done
    wait
}
trap end EXIT
trap 'exit 1' HUP INT TERM
"$@" -E "$log" </dev/null >/dev/null 2>&1 3<&- &
exec 2>/dev/null
while read -r signal; do
    each "$signal"
    each "$signal" # sessions that have begun meanwhile
    echo
done
)");

QString wrapperLibrary() {
    for (const char* folder :
         {"/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu", "/usr/lib64", "/usr/lib"}) {
        const QString path = QString::fromLatin1(folder) + QStringLiteral("/libnss_wrapper.so");
        if (QFileInfo::exists(path))
            return path;
    }
    return {};
}
} // namespace

bool SshDaemon::available() {
    return QFileInfo(sshdProgram).isExecutable() && !wrapperLibrary().isEmpty();
}

SshDaemon::SshDaemon(const QString& folder, const QString& configuration, int port) {
    const QString log = folder + QStringLiteral("/sshd.log");
    writePrivateFile(log, {});
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), wrapperLibrary());
    environment.insert(QStringLiteral("NSS_WRAPPER_PASSWD"), folder + QStringLiteral("/passwd"));
    environment.insert(QStringLiteral("NSS_WRAPPER_GROUP"), folder + QStringLiteral("/group"));
    m_watch.setProcessEnvironment(environment);
    m_watch.setChildProcessModifier([] { ::setsid(); }); // the terminal's interrupt key is meant for us
    m_watch.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), watchScript, QStringLiteral("sshd-watch"), log, sshdProgram,
                   QStringLiteral("-D"), QStringLiteral("-f"), configuration});
    if (!m_watch.waitForStarted(endLimit))
        throw std::runtime_error("sshd does not start");
    awaitListening(port, log);
}

SshDaemon::~SshDaemon() {
    end();
}

void SshDaemon::end() {
    m_watch.closeWriteChannel();
    m_watch.waitForFinished(endLimit);
}

void SshDaemon::awaitListening(int port, const QString& log) {
    for (int i = 0; i < readinessProbes; ++i) {
        // Wait for its log line first: another program could listen on this port.
        if (contentOf(log).contains("Server listening on")) {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
            if (probe.waitForConnected(endLimit))
                return;
        }
        QThread::msleep(probePause);
    }
    end();
    throw std::runtime_error("sshd does not listen: " + contentOf(log).trimmed().toStdString());
}

void SshDaemon::signalAll(const QByteArray& signal) {
    m_watch.write(signal + '\n');
    while (!m_watch.canReadLine()) {
        if (!m_watch.waitForReadyRead(endLimit))
            throw std::runtime_error("sshd's watch does not answer");
    }
    m_watch.readLine();
}

} // namespace sandbox
