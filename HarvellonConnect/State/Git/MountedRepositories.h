#pragma once

#include "System/HostSystem.h"
#include "System/Reporter.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class Connections;
class SSHFSMounter;

/// git in mounted projects: the switch that adapts it, which folders it trusts while they are mounted, and a
/// word to whoever mounts a repository without it.
///
///     look ──▶ off ◀──setOn──▶ on ──▶ what is mounted is trusted, from the mount to the disconnect
///               └──a repository is mounted──▶ told, once in a run
///
/// The user's own configuration says whether it is on, and may be changed by others at any time. Main thread.
class MountedRepositories : public QObject {
    Q_OBJECT

  public:
    /// All that is referred to outlives this.
    MountedRepositories(HostSystem host, Shell& shell, SSHFSMounter& mounter, Connections& connections,
                        Reporter& report);

    /// Reads from the user's configuration whether the switch is on, and forgets the last failure. Never
    /// fails.
    QCoro::Task<> look();

    /// As last read; while a change is under way, what the user wants.
    [[nodiscard]] bool isOn() const { return m_wanted.value_or(m_on); }

    /// Why the last change failed; empty when it did not.
    [[nodiscard]] QString problem() const { return m_problem; }

    /// Changes the user's configuration. A failure is logged, and the switch goes back.
    void setOn(bool on);

  Q_SIGNALS:
    void changed();

  private:
    QCoro::Task<> readState();
    QCoro::Task<> applyWish();
    QCoro::Task<Ending> apply(bool on);
    QCoro::Task<> tellAbout(QString domain);
    void trustMounted();
    [[nodiscard]] QStringList mountedFolders() const;

    const HostSystem m_host;
    Shell& m_shell;
    SSHFSMounter& m_mounter;
    Reporter& m_report;
    bool m_on = false;
    std::optional<bool> m_wanted;
    QString m_problem;
    bool m_told = false;
};
