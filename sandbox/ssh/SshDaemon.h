#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

namespace sandbox {

/// One running sshd with the sessions it has. It ends with this object, and also when this process is killed.
/// One thread.
class SshDaemon {
  public:
    /// Runs sshd with `configuration` under the user and group files of `folder`, and returns when it listens
    /// on 127.0.0.1:`port`. Throws std::runtime_error.
    SshDaemon(const QString& folder, const QString& configuration, int port);
    /// Ends sshd and all sessions at once.
    ~SshDaemon();
    Q_DISABLE_COPY_MOVE(SshDaemon)

    /// Whether this machine has what it takes.
    static bool available();

    /// Sends sshd and all its sessions a signal, named as for kill(1). Throws std::runtime_error.
    void signalAll(const QByteArray& signal);

  private:
    void awaitListening(int port, const QString& log);
    void end();

    QProcess m_watch;
};

} // namespace sandbox
