#pragma once

#include "Directory/Project.h"
#include "Mounting/MountLimits.h"
#include "Mounting/MounterError.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QDateTime>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class MountAttempt;
class SSHFSProcess;
class StartQueue;

/// One live mount.
struct MountSession {
    QString domain;
    QString mountPoint; ///< absolute path of the local folder
    std::shared_ptr<SSHFSProcess> process;
    QDateTime startedAt;      ///< when the server had answered
    bool coversFiles = false; ///< the mount hides local files that lie in the folder
};

/// Mounts project trees with one long-lived sshfs each, and takes them down again.
///
///     mount() ──▶ MountInProgress ──server has answered──▶ session
///                    └─ refused, cancelled, 15 s: not mounted
///
///     session ──unmount()──▶ UnmountInProgress ──▶ sshfs ended, or kept until files are closed: not mounted
///        └─ sshfs ended by itself: not mounted, onUnexpectedTermination
///
/// A mount counts only when the server has answered. The main thread never accesses a mounted folder. A
/// process that hangs in such an access is freed before the mounter forgets the mount, because an sshfs that
/// does not end is killed. A domain has at most one mount in progress, one session or one unmount in progress
/// at a time; a second caller waits for it or is refused. Main thread.
class SSHFSMounter : public QObject {
    Q_OBJECT

  public:
    /// `shell` must outlive this.
    SSHFSMounter(HostSystem host, Shell& shell, MountLimits limits = {}, QObject* parent = nullptr);
    /// Cancels mounts in progress and leaves finished ones mounted.
    ~SSHFSMounter() override;

    /// The mounts of this mounter, by domain.
    [[nodiscard]] const QHash<QString, MountSession>& sessions() const { return m_sessions; }

    [[nodiscard]] QSet<QString> connectedDomains() const;
    /// Where `domain` is mounted. Reads `sessions`, not the file system.
    [[nodiscard]] std::optional<QString> mountPoint(const QString& domain) const;

    /// Whether nothing is mounted, in progress or kept until files are closed.
    [[nodiscard]] bool isIdle() const {
        return m_sessions.isEmpty() && m_attempts.isEmpty() && m_unmounts.isEmpty() &&
               m_keptUntilClosed.isEmpty();
    }

    /// Whether a mount of `domain` is in progress.
    [[nodiscard]] bool isMounting(const QString& domain) const { return m_attempts.contains(domain); }

    /// Called when an sshfs has ended without `unmount`, after its session was removed.
    std::function<void(QString domain, qint32 exitCode)> onUnexpectedTermination;

    /// Mounts the project's tree at <mount root>/<domain>. From the start of sshfs this takes at most 15
    /// seconds plus the clean-up; simultaneous mounts start one after the other. Yields the existing session
    /// of a mounted domain, and refuses a domain whose mount is in progress. Throws MounterError after
    /// everything that was begun has been cleared.
    QCoro::Task<MountSession> mount(Project project);

    /// Unmounts `domain`, gently first and then by force, or cancels its mount in progress. Does nothing when
    /// there is neither. Yields whether files are still in use: they stay usable, and sshfs ends when the
    /// last one is closed. Throws MounterError::unmountFailed when every command failed; the session is
    /// removed even then.
    QCoro::Task<bool> unmount(QString domain);

    /// The domains that an earlier, killed run of the program has left mounted.
    [[nodiscard]] QStringList leftBehind() const;
    /// Unmounts such a domain without force, so that a mount in use stays. Yields whether it is unmounted.
    /// Never throws.
    QCoro::Task<bool> clearLeftBehind(QString domain);

    /// Ends every mount at the same time, including those in progress and those whose files are in use. Never
    /// throws. Takes at most five seconds, even when servers are silent.
    QCoro::Task<> unmountAll();

  private:
    class MountInProgress;
    class UnmountInProgress;

    void refuseUnlessMountable(const Project& project) const;
    void addSession(const MountSession& session);
    QCoro::Task<bool> unmountWithin(QString domain, UnmountLimits limits);
    QCoro::Task<> unmountQuietly(QString domain, UnmountLimits limits);
    QCoro::Task<bool> takeDown(MountSession session, UnmountLimits limits);
    static QCoro::Task<bool> endProcess(QPointer<SSHFSMounter> mounter, HostSystem host, Shell& shell,
                                        MountSession session, UnmountLimits limits, bool mayKeep);
    void keepUntilClosed(const std::shared_ptr<SSHFSProcess>& process);
    void handleUnexpectedEnd(const QString& domain, qint32 exitCode);
    QCoro::Task<> clearDeadMount(MountSession session);
    [[nodiscard]] std::optional<QFuture<void>> unmountOf(const QString& domain) const;
    void killAll();

    const HostSystem m_host;
    Shell& m_shell;
    const MountLimits m_limits;
    const std::shared_ptr<StartQueue> m_startQueue; ///< shared with attempts, which may outlive the mounter
    QHash<QString, MountSession> m_sessions;
    QHash<QString, std::shared_ptr<MountAttempt>> m_attempts;
    QHash<QString, QFuture<void>> m_unmounts;               ///< in progress
    QList<std::shared_ptr<SSHFSProcess>> m_keptUntilClosed; ///< unmounted, but files are still open
    int m_closing = 0;                                      ///< calls of unmountAll in progress
};
