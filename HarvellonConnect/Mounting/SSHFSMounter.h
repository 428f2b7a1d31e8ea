#pragma once

#include "Directory/Project.h"
#include "Mounting/MounterError.h"
#include "Mounting/Unmounting.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QDateTime>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class MountAttempt;
class SSHFSProcess;

/// One live mount.
struct MountSession {
    QString domain;
    QString mountPoint; ///< absolute path of the local folder
    std::shared_ptr<SSHFSProcess> process;
    QDateTime startedAt;      ///< when the server had answered
    bool coversFiles = false; ///< local files lie in the folder, out of sight while the mount stands
};

/// Mounts project trees with one long-lived sshfs each, and takes them down again.
///
///     not mounted ──mount()──▶ mounting ──server answered──▶ mounted ──unmount()──▶ not mounted
///                                 │                             │
///                                 └─ refused, 15 s: not mounted └─ sshfs ended by itself:
///                                                                  onUnexpectedTermination
///
/// A mount counts only when the server has answered. No question is put to a mounted folder on the main
/// thread, and whoever may hang in such a question is freed before the mounter lets go of the mount: sshfs is
/// killed where it does not end by itself. Of a domain there is at any time one mount under way, one session
/// or one end; whoever comes meanwhile waits for it or is refused. Main thread.
class SSHFSMounter : public QObject {
    Q_OBJECT

  public:
    /// `shell` must outlive this.
    SSHFSMounter(HostSystem host, Shell& shell, QObject* parent = nullptr);
    /// Gives up mounts under way. Mounts that stand are left standing.
    ~SSHFSMounter() override;

    /// The mounts that this program started and still owns, by domain.
    [[nodiscard]] const QHash<QString, MountSession>& sessions() const { return m_sessions; }

    [[nodiscard]] QSet<QString> connectedDomains() const;
    /// Where `domain` is mounted; asks the table of sessions, not the file system.
    [[nodiscard]] std::optional<QString> mountPoint(const QString& domain) const;

    /// Whether nothing is mounted, under way or in use.
    [[nodiscard]] bool isIdle() const {
        return m_sessions.isEmpty() && m_attempts.isEmpty() && m_endings.isEmpty() && m_spared.isEmpty();
    }

    /// Whether a mount of `domain` is under way.
    [[nodiscard]] bool isMounting(const QString& domain) const { return m_attempts.contains(domain); }

    /// Called when an sshfs ended that `unmount` did not take down, after its session is gone.
    std::function<void(QString domain, qint32 exitCode)> onUnexpectedTermination;

    /// Mounts the project's tree at <mount root>/<domain>. Takes at most 15 seconds plus the clean-up; of
    /// many at once each begins a moment after the one before. A domain that is mounted yields its session;
    /// one that is being mounted is refused. Throws MounterError; of what was begun nothing is left then.
    QCoro::Task<MountSession> mount(Project project);

    /// Takes the mount of `domain` down: gently first, and in any case. A mount under way is given up.
    /// Without either nothing happens. Yields whether files are still in use: whoever has them open goes on
    /// with them, and sshfs ends when the last one is closed. Throws MounterError::unmountFailed when every
    /// command failed; the session is gone even then.
    QCoro::Task<bool> unmount(QString domain);

    /// The domains that a program which was killed has left mounted.
    [[nodiscard]] QStringList leftBehind() const;
    /// Takes such a mount down, gently: one that somebody works in stays. Yields whether it is gone. Never
    /// throws.
    QCoro::Task<bool> clearLeftBehind(QString domain);

    /// Ends every mount, those under way and those still in use included, all at once. Never throws; done
    /// within five seconds even where servers are silent.
    QCoro::Task<> unmountAll();

  private:
    class Ending;

    QCoro::Task<bool> end(QString domain, Patience patience);
    QCoro::Task<> endQuietly(QString domain, Patience patience);
    QCoro::Task<bool> takeDown(MountSession session, Patience patience);
    QCoro::Task<> clearInBackground(MountSession session);
    void processEnded(const QString& domain, qint32 exitCode);
    void spare(const std::shared_ptr<SSHFSProcess>& process);
    void killAll();

    const HostSystem m_host;
    Shell& m_shell;
    QHash<QString, MountSession> m_sessions;
    QHash<QString, std::shared_ptr<MountAttempt>> m_attempts;
    QHash<QString, QFuture<void>> m_endings;       ///< mounts being taken down
    QList<std::shared_ptr<SSHFSProcess>> m_spared; ///< unmounted, but somebody still has files open
    int m_closing = 0;                             ///< calls of unmountAll under way
};
