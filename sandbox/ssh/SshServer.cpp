#include "sandbox/ssh/SshServer.h"

#include "sandbox/PrivateFile.h"
#include "sandbox/ssh/ProjectTrees.h"

#include <QDir>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QTcpServer>

#include <stdexcept>
#include <unistd.h>

namespace sandbox {

namespace {
/// A path as the value of an ssh or sshd option: blanks split it, and a percent sign begins a placeholder.
QString optionValue(QString path) {
    return QLatin1Char('"') + path.replace(QLatin1Char('%'), QStringLiteral("%%")) + QLatin1Char('"');
}

QString shellWord(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}
} // namespace

SshServer::SshServer(QString folder, QString treeRoot)
    : m_folder(std::move(folder)), m_treeRoot(std::move(treeRoot)) {}

void SshServer::prepare(const QList<HostedProject>& projects) {
    makeFolder(binFolder());
    for (const HostedProject& project : projects)
        layTree(m_treeRoot, project);
    makeKey(QStringLiteral("host_key"));
    makeKey(QStringLiteral("client_key"));
    choosePort();
    writeServerFiles(projects);
    writeClientFiles(m_port);
    acceptKey(true);
}

void SshServer::choosePort() {
    const QString file = m_folder + QStringLiteral("/port");
    QTcpServer probe;
    const auto former = static_cast<quint16>(contentOf(file).toInt());
    if (!probe.listen(QHostAddress::LocalHost, former) && !probe.listen(QHostAddress::LocalHost))
        throw std::runtime_error("no port for sshd");
    m_port = probe.serverPort();
    writePrivateFile(file, QByteArray::number(m_port));
}

void SshServer::makeKey(const QString& name) const {
    const QString path = m_folder + QLatin1Char('/') + name;
    if (QFileInfo::exists(path))
        return;
    QProcess keygen;
    keygen.start(QStringLiteral("ssh-keygen"),
                 {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("ed25519"), QStringLiteral("-N"),
                  QString(), QStringLiteral("-C"), QStringLiteral("sandbox"), QStringLiteral("-f"), path});
    if (!keygen.waitForFinished() || keygen.exitCode() != 0)
        throw std::runtime_error("ssh-keygen makes no key: " + keygen.readAllStandardError().toStdString());
}

void SshServer::writeServerFiles(const QList<HostedProject>& projects) const {
    const auto user = getuid();
    const auto group = getgid();
    QString passwd = QStringLiteral("runner:x:%1:%2::%3:/bin/sh\n").arg(user).arg(group).arg(m_folder);
    if (user == 0) {
        // Started by root, sshd insists on a user and a folder for the part of it that has no rights.
        passwd += QStringLiteral("sshd:x:65533:65534::/run/sshd:/usr/sbin/nologin\n");
        makeFolder(QStringLiteral("/run/sshd"));
    }
    for (const HostedProject& project : projects)
        passwd += QStringLiteral("ssh%1:x:%2:%3::%4:/bin/sh\n")
                      .arg(project.webspaceID)
                      .arg(user)
                      .arg(group)
                      .arg(homeFolder(m_treeRoot, project));
    writePrivateFile(m_folder + QStringLiteral("/passwd"), passwd.toUtf8());
    writePrivateFile(m_folder + QStringLiteral("/group"),
                     QStringLiteral("runner:x:%1:\n").arg(group).toUtf8());
    writePrivateFile(m_folder + QStringLiteral("/sshd_config"),
                     QStringLiteral("Port %1\n"
                                    "ListenAddress 127.0.0.1\n"
                                    "HostKey \"%2/host_key\"\n"
                                    "AuthorizedKeysFile %3\n"
                                    "PidFile \"%2/sshd.pid\"\n"
                                    "UsePAM no\n"
                                    "StrictModes no\n"
                                    "PasswordAuthentication no\n"
                                    "KbdInteractiveAuthentication no\n"
                                    "PermitRootLogin prohibit-password\n"
                                    "PrintMotd no\n"
                                    "PrintLastLog no\n"
                                    "MaxStartups 100\n"
                                    "Subsystem sftp internal-sftp\n")
                         .arg(m_port)
                         .arg(m_folder, optionValue(m_folder + QStringLiteral("/authorized_keys")))
                         .toUtf8());
}

void SshServer::writeClientFiles(int port) const {
    // A known-hosts file named on the command line has precedence; the user's own file is never used.
    writePrivateFile(configFile(), QStringLiteral("Host *.sandbox.test\n"
                                                  "  HostName 127.0.0.1\n"
                                                  "  Port %1\n"
                                                  "  IdentityFile %2\n"
                                                  "  IdentitiesOnly yes\n"
                                                  "  IdentityAgent none\n"
                                                  "  UserKnownHostsFile %3\n")
                                       .arg(port)
                                       .arg(optionValue(m_folder + QStringLiteral("/client_key")),
                                            optionValue(m_folder + QStringLiteral("/known_hosts")))
                                       .toUtf8());
    writePrivateFile(
        binFolder() + QStringLiteral("/ssh"),
        QStringLiteral("#!/bin/sh\nexec /usr/bin/ssh -F %1 \"$@\"\n").arg(shellWord(configFile())).toUtf8(),
        QFile::ExeOwner);
}

void SshServer::start() {
    stop();
    m_daemon.emplace(m_folder, m_folder + QStringLiteral("/sshd_config"), m_port);
}

void SshServer::freeze() {
    if (m_daemon)
        m_daemon->signalAll("STOP");
}

void SshServer::thaw() {
    if (m_daemon)
        m_daemon->signalAll("CONT");
}

void SshServer::acceptKey(bool accept) {
    writePrivateFile(m_folder + QStringLiteral("/authorized_keys"),
                     accept ? contentOf(m_folder + QStringLiteral("/client_key.pub")) : QByteArray());
}

void SshServer::replaceHostKey() {
    stop();
    QFile::remove(m_folder + QStringLiteral("/host_key"));
    QFile::remove(m_folder + QStringLiteral("/host_key.pub"));
    makeKey(QStringLiteral("host_key"));
    start();
}

} // namespace sandbox
