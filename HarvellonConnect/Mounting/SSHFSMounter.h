#pragma once

#include "Directory/Project.h"
#include "Mounting/Ending/KeptMounts.h"
#include "Mounting/MountLimits.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MountSession.h"
#include "Mounting/MounterError.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QFuture>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class StartQueue;
struct MountsInProgress;

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

    /// Mounts that were unmounted while files were open; each stays until its last file is closed.
    [[nodiscard]] const QList<MountSession>& keptUntilClosed() const { return m_kept.sessions(); }

    [[nodiscard]] QSet<QString> connectedDomains() const;
    /// Where `domain` is mounted. Reads `sessions`, not the file system.
    [[nodiscard]] std::optional<QString> mountPoint(const QString& domain) const;

    /// Whether nothing is mounted, in progress or kept until files are closed.
    [[nodiscard]] bool isIdle() const;

    /// Called when an sshfs has ended without `unmount`, after its session was removed.
    std::function<void(QString domain, qint32 exitCode)> onUnexpectedTermination;

    /// Called when an sshfs that was kept for files in use has not ended by itself.
    std::function<void(QString domain, qint32 exitCode)> onKeptMountLost;

    /// Mounts the project's tree at <mount root>/<domain>. From the start of sshfs this takes at most 15
    /// seconds plus the clean-up; simultaneous mounts start one after the other. Yields the existing session
    /// of a mounted domain, and refuses a domain whose mount is in progress. Throws MounterError or
    /// SystemError after everything that was begun has been cleared.
    QCoro::Task<MountSession> mount(Project project, Links links = Links::local);

    /// Unmounts `domain`, gently first and then by force, or cancels its mount in progress. Does nothing when
    /// there is neither. While the server answers or bytes are moving, files in use are not cut off. A second
    /// caller gets the outcome of the unmount in progress. Throws MounterError::unmountFailed when every
    /// command failed; the session is removed even then.
    QCoro::Task<UnmountResult> unmount(QString domain) { return unmountWithin(domain, m_limits.unmount); }

    /// Asks the file system of a mounted domain on a worker thread; see MountQuestions. Nothing when the
    /// domain is not mounted.
    [[nodiscard]] std::optional<QFuture<bool>> ask(const QString& domain,
                                                   const std::function<bool()>& question) const;

    /// Fills the caches of a mounted domain, unless that is under way or they are full; `mount` does it too.
    void warmUp(const QString& domain);

    /// Unmounts what no program uses, before the system sleeps; what is in use stays. Ends no sshfs by force.
    /// Yields what was unmounted. Takes at most about one and a half seconds. Never throws.
    QCoro::Task<QList<Project>> detachIdle();

    /// Whether something is mounted where `domain` would be, and not by this mounter. `mount` would force it
    /// off.
    [[nodiscard]] bool isOccupied(const QString& domain) const;

    /// The domains that an earlier, killed run of the program has left mounted. Mounts that somebody else has
    /// made in the same folder are not among them.
    [[nodiscard]] QStringList leftBehind() const;
    /// Unmounts such a domain without force, so that a mount in use stays. Yields whether it is unmounted.
    /// Never throws.
    QCoro::Task<bool> clearLeftBehind(QString domain);

    /// Refuses every mount from now on, because the program is ending.
    void close() { m_closed = true; }

    /// Closes the mounter and ends every mount at the same time, including those in progress and those whose
    /// files are in use. Never throws. Takes at most five seconds, even when servers are silent.
    QCoro::Task<> unmountAll();

  private:
    void refuseUnlessMountable(const Project& project) const;
    void addSession(const MountSession& session);
    QCoro::Task<UnmountResult> unmountWithin(QString domain, UnmountLimits limits);
    QCoro::Task<> unmountQuietly(QString domain, UnmountLimits limits);
    QCoro::Task<UnmountResult> takeDown(MountSession session, UnmountLimits limits);
    QCoro::Task<bool> detach(MountSession session);
    void watchEnd(const MountSession& session);
    void keptMountEnded(const QString& domain, qint32 exitCode);
    void releaseFolder(const QString& domain) const;
    void handleUnexpectedEnd(const QString& domain, qint32 exitCode);
    QCoro::Task<> clearDeadMount(MountSession session);
    QList<QFuture<void>> endsOfAll();
    void killAll();

    const HostSystem m_host;
    Shell& m_shell;
    const MountLimits m_limits;
    const std::shared_ptr<StartQueue> m_startQueue; ///< shared with attempts, which may outlive the mounter
    QHash<QString, MountSession> m_sessions;
    const std::shared_ptr<MountsInProgress>
        m_running;                        ///< shared with coroutines that may outlive the mounter
    QHash<QString, mode_t> m_folderModes; ///< of the folders before they were first mounted on
    KeptMounts m_kept;
    bool m_closed = false; ///< the program is ending
};
