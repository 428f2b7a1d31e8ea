#include "sandbox/Sandbox.h"

#include "sandbox/PrivateFile.h"

#include <QDir>
#include <QSet>

#include <cstdio>
#include <stdexcept>

namespace sandbox {

namespace {
constexpr qsizetype logins = 40; // of 10,000 generated projects only the first have trees
} // namespace

Sandbox::Sandbox(const Options& options)
    : m_folder(QDir(options.folder).absolutePath()), m_lock(m_folder + QStringLiteral("/lock")),
      m_identities(identities(options.generatedProjects)),
      m_ledger(m_folder + QStringLiteral("/tokens.json")),
      m_ssh(m_folder + QStringLiteral("/ssh"), treeRoot()) {
    makeFolder(m_folder);
    m_lock.setStaleLockTime(0); // however old: what counts is whether its process lives
    if (!m_lock.tryLock())
        throw std::runtime_error("the folder is in use: " + m_folder.toStdString());
    m_web = std::make_unique<WebServer>(m_identities, m_ledger, m_faults, treeRoot(),
                                        m_folder + QStringLiteral("/port"));
    m_sites = std::make_unique<Sites>(m_folder + QStringLiteral("/sites"), m_faults);
    m_hasSsh = options.ssh && SshDaemon::available();
    if (m_hasSsh)
        startSsh();
    else if (options.ssh)
        std::fputs("sandbox: no SSH hosts here (sshd or libnss_wrapper is missing)\n", stderr);
}

void Sandbox::startSsh() {
    QList<HostedProject> hosted;
    QSet<qint64> known;
    for (const Identity& identity : m_identities) {
        for (const HostedProject& project : identity.projects) {
            if (hosted.size() == logins)
                break;
            if (!known.contains(project.webspaceID)) {
                known.insert(project.webspaceID);
                hosted.append(project);
            }
        }
    }
    m_ssh.prepare(hosted);
    m_ssh.start();
}

QString Sandbox::server() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(m_web->port());
}

} // namespace sandbox
