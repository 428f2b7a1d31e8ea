#pragma once

#include "sandbox/Identities.h"
#include "sandbox/ssh/SshDaemon.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace sandbox {

/// One sshd, run without root, that serves every project's login on 127.0.0.1. Clients reach it under the
/// projects' own domains through `binFolder()`, which belongs first on the search path. One thread. What
/// changes something throws std::runtime_error.
class SshServer {
  public:
    /// `folder`: for keys and configuration; `treeRoot`: for the project trees. Neither touches the disk nor
    /// starts sshd yet.
    SshServer(QString folder, QString treeRoot);
    Q_DISABLE_COPY_MOVE(SshServer)

    /// Makes the trees and logins of `projects`, missing keys, and the ssh client's configuration.
    void prepare(const QList<HostedProject>& projects);

    /// Starts sshd on the prepared port; returns when it listens.
    void start();

    /// Kills sshd and all its sessions; does nothing when sshd does not run.
    void stop() { m_daemon.reset(); }

    /// Suspends sshd and all its sessions (SIGSTOP): connections stay open, nothing is answered.
    void freeze();
    void thaw();

    /// Whether logins with the client's key are accepted. Running sessions go on.
    void acceptKey(bool accept);
    /// Replaces the host key and restarts sshd.
    void replaceHostKey();

    [[nodiscard]] int port() const { return m_port; }

    /// Lets clients connect to another port from now on, behind which a SlowLine leads here.
    void letClientsUse(int port) const { writeClientFiles(port); }

    [[nodiscard]] QString configFile() const { return m_folder + QStringLiteral("/ssh_config"); }

    /// Contains an `ssh` command that connects to this server.
    [[nodiscard]] QString binFolder() const { return m_folder + QStringLiteral("/bin"); }

  private:
    void choosePort();
    void makeKey(const QString& name) const;
    void writeServerFiles(const QList<HostedProject>& projects) const;
    void writeClientFiles(int port) const;

    const QString m_folder;
    const QString m_treeRoot;
    int m_port = 0;
    std::optional<SshDaemon> m_daemon;
};

} // namespace sandbox
