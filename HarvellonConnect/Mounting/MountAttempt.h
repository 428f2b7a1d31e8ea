#pragma once

#include "Directory/Project.h"
#include "Mounting/MountPointFolder.h"
#include "Mounting/Unmounting.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QFuture>
#include <QPromise>
#include <QString>

#include <memory>
#include <optional>

class SSHFSProcess;

/// One try to mount a project's tree.
///
///     stale mount forced off ──▶ folder and host key list ──▶ sshfs started ──▶ server answered: done
///                                                                 │
///                                                                 └─ refused, given up, 15 s: all cleared
///
/// Main thread.
class MountAttempt {
  public:
    /// `shell` must outlive this.
    MountAttempt(HostSystem host, Shell& shell, Project project);
    ~MountAttempt();
    Q_DISABLE_COPY_MOVE(MountAttempt)

    /// Makes the try and yields the sshfs of a mount whose server has answered. Throws MounterError, when
    /// nothing is left of what was begun.
    static QCoro::Task<std::shared_ptr<SSHFSProcess>> run(std::shared_ptr<MountAttempt> attempt);

    /// Lets the try fail soon.
    void giveUp(Patience patience);
    /// The last resort where giving up takes too long.
    void kill();

    /// Finished when `close` was called: the try is over and its outcome known to the mounter.
    [[nodiscard]] QFuture<void> over() const { return m_over.future(); }

    void close() { m_over.finish(); }

    [[nodiscard]] QString mountPoint() const;

    /// Whether local files lie where the tree is mounted.
    [[nodiscard]] bool coversFiles() const { return m_coversFiles; }

  private:
    static QCoro::Task<> start(std::shared_ptr<MountAttempt> attempt);
    static QCoro::Task<> waitUntilMounted(std::shared_ptr<MountAttempt> attempt);
    void failWhenGivenUp() const;

    const HostSystem m_host;
    Shell& m_shell;
    const Project m_project;
    std::shared_ptr<SSHFSProcess> m_process;
    Patience m_patience = usualPatience;
    bool m_givenUp = false;
    bool m_coversFiles = false;
    std::optional<MountPointFolder> m_folder; ///< from the moment it is needed
    QPromise<void> m_over;
};
