#pragma once

#include "Directory/Project.h"
#include "Mounting/MountLimits.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MountPointFolder.h"
#include "Mounting/MountSession.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QFuture>
#include <QPromise>
#include <QString>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

/// Spreads the starts of sshfs over time, one per interval. Main thread.
class StartQueue {
  public:
    using Clock = std::chrono::steady_clock;

    explicit StartQueue(std::chrono::milliseconds interval) : m_interval(interval) {}

    /// The time at which the caller may start its sshfs; later callers get later times.
    [[nodiscard]] Clock::time_point nextTurn() {
        const Clock::time_point turn = std::max(Clock::now(), m_nextTurn);
        m_nextTurn = turn + m_interval;
        return turn;
    }

  private:
    const std::chrono::milliseconds m_interval;
    Clock::time_point m_nextTurn;
};

/// One attempt to mount a project's tree.
///
///     waitForTurn ──▶ start ──────────────────────────▶ waitUntilMounted ──▶ server has answered: mounted
///                     stale mount forced off,              │
///                     folder and host key list prepared,   └─ refused, cancelled, 15 s: all cleared
///                     sshfs started
///
/// Each of the three steps throws MounterError or SystemError when it fails; `run` then removes what the
/// attempt has begun.
/// Main thread.
class MountAttempt {
  public:
    /// `shell` must outlive this.
    MountAttempt(HostSystem host, Shell& shell, Project project, Links links, MountLimits limits,
                 std::shared_ptr<StartQueue> startQueue);
    ~MountAttempt();
    Q_DISABLE_COPY_MOVE(MountAttempt)

    /// Mounts, and yields the session when the server has answered. Throws MounterError, or SystemError with
    /// the system's own words, after everything that was begun has been cleared. Call it once.
    static QCoro::Task<MountSession> run(std::shared_ptr<MountAttempt> attempt);

    /// Makes `run` fail soon. `limits` are those of the clean-up.
    void cancel(UnmountLimits limits);
    /// Kills sshfs, for an attempt whose clean-up takes too long.
    void kill();

    /// Finished after `markFinished`, which the mounter calls when it has recorded the outcome.
    [[nodiscard]] QFuture<void> finished() const { return m_finished.future(); }

    void markFinished() { m_finished.finish(); }

    [[nodiscard]] QString mountPoint() const;

    [[nodiscard]] const QString& domain() const { return m_project.domain; }

  private:
    static QCoro::Task<> waitForTurn(std::shared_ptr<MountAttempt> attempt);
    static QCoro::Task<> start(std::shared_ptr<MountAttempt> attempt);
    static QCoro::Task<> waitUntilMounted(std::shared_ptr<MountAttempt> attempt);
    void throwIfCancelled() const;
    [[nodiscard]] MountSession session(mode_t folderMode) const;

    const HostSystem m_host;
    Shell& m_shell;
    const Project m_project;
    const Links m_links;
    const std::chrono::milliseconds m_mountLimit;
    const std::shared_ptr<StartQueue> m_startQueue;
    const std::shared_ptr<SSHFSProcess> m_process;
    const std::shared_ptr<MountQuestions> m_questions;
    UnmountLimits m_clearLimits;
    const WarmUpLimits m_warmUpLimits;
    bool m_cancelled = false;
    std::optional<MountPointFolder> m_folder; ///< set by `start`
    QPromise<void> m_finished;
};
