#include "Mounting/MountAttempt.h"

#include "Mounting/Ending/Unmounting.h"
#include "Mounting/Keys/KnownHosts.h"
#include "Mounting/MountQuestions.h"
#include "Mounting/MounterError.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/Setup/SSHFSReadiness.h"
#include "Mounting/WarmUp/WarmUp.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Tables/MountTable.h"

#include <QDeadlineTimer>

#include <exception>

namespace {
constexpr std::chrono::milliseconds answerStep{150};
constexpr std::chrono::milliseconds tableStep{20}; // reading the mount table is cheap
constexpr std::chrono::milliseconds cancelStep{80};
constexpr std::chrono::seconds staleLimit{2};
} // namespace

MountAttempt::MountAttempt(HostSystem host, Shell& shell, Project project, Links links, MountLimits limits,
                           std::shared_ptr<StartQueue> startQueue)
    : m_host(std::move(host)), m_shell(shell), m_project(std::move(project)), m_links(links),
      m_mountLimit(limits.mount), m_startQueue(std::move(startQueue)),
      m_process(std::make_shared<SSHFSProcess>()),
      m_questions(std::make_shared<MountQuestions>(mountPoint())), m_clearLimits(limits.unmount),
      m_warmUpLimits(limits.warmUp) {
    m_finished.start();
}

MountAttempt::~MountAttempt() = default;

QString MountAttempt::mountPoint() const {
    return m_host.mountPoint(m_project.domain);
}

QCoro::Task<MountSession> MountAttempt::run(std::shared_ptr<MountAttempt> attempt) {
    std::exception_ptr failure;
    try {
        co_await waitForTurn(attempt);
        co_await start(attempt);
        co_await waitUntilMounted(attempt);
    } catch (const Failure&) {
        failure = std::current_exception();
    }
    const QString mountPoint = attempt->mountPoint();
    const mode_t folderMode = attempt->m_folder ? attempt->m_folder->formerMode() : 0;
    if (!failure)
        co_return attempt->session(folderMode);
    co_await clearLeftovers(attempt->m_host, attempt->m_shell, attempt->m_process, mountPoint,
                            attempt->m_clearLimits);
    if (attempt->m_folder) {
        attempt->m_folder.reset();
        // As it was found: a folder that was sealed stays so, because an editor may have its tree open.
        MountPointFolder::release(mountPoint, folderMode);
    }
    std::rethrow_exception(failure);
}

MountSession MountAttempt::session(mode_t folderMode) const {
    return {m_project.domain,
            mountPoint(),
            m_process,
            QDateTime::currentDateTime(),
            m_project,
            m_questions,
            std::make_shared<WarmUp>(mountPoint(), m_warmUpLimits),
            m_folder->coversFiles(),
            folderMode};
}

QCoro::Task<> MountAttempt::waitForTurn(std::shared_ptr<MountAttempt> attempt) {
    using Clock = StartQueue::Clock;
    attempt->throwIfCancelled();
    const Clock::time_point turn = attempt->m_startQueue->nextTurn();
    while (Clock::now() < turn) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(turn - Clock::now());
        co_await Async::sleep(std::min(left, cancelStep)); // short steps, so that a cancel takes effect soon
        attempt->throwIfCancelled();
    }
}

QCoro::Task<> MountAttempt::start(std::shared_ptr<MountAttempt> attempt) {
    const std::optional<QString> sshfs = sshfsPath(attempt->m_host);
    if (!sshfs)
        throw MounterError(MounterError::Case::sshfsNotFound);

    const QString mountPoint = attempt->mountPoint();
    // The kernel's mount table lists dead mounts too, and reading it never blocks on a server.
    if (MountTable::lists(mountPoint)) {
        qCInfo(lcSSHFSMounter, "mount: stale mount at %s, forcing unmount", qUtf8Printable(mountPoint));
        co_await forceUnmount(attempt->m_host, attempt->m_shell, mountPoint, staleLimit);
        if (MountTable::lists(mountPoint))
            throw MounterError(MounterError::Case::mountPointOccupied, mountPoint);
        attempt->throwIfCancelled();
    }
    attempt->m_folder.emplace(mountPoint);
    prepareKnownHosts(attempt->m_host);
    qCInfo(lcSSHFSMounter, "mount: spawning sshfs for %s", qUtf8Printable(attempt->m_project.domain));
    attempt->m_process->start(
        *sshfs, sshfsArguments(attempt->m_host, attempt->m_project, mountPoint, attempt->m_links));
}

QCoro::Task<> MountAttempt::waitUntilMounted(std::shared_ptr<MountAttempt> attempt) {
    const QString domain = attempt->m_project.domain;
    const QString mountPoint = attempt->mountPoint();
    const SSHFSProcess& process = *attempt->m_process;
    const QDeadlineTimer deadline(attempt->m_mountLimit);
    bool mounted = false;
    for (;;) {
        attempt->throwIfCancelled();
        if (deadline.hasExpired()) {
            qCInfo(lcSSHFSMounter, "mount: timeout for %s", qUtf8Printable(domain));
            throw MounterError(MounterError::Case::mountTimeout);
        }
        if (!process.startFailure().isEmpty())
            throw SystemError(process.startFailure());
        if (!process.isRunning())
            throw MounterError::fromSSHFS(process.errorText(), domain);
        if (mounted)
            co_return;

        if (!MountTable::lists(mountPoint)) { // the check would only look at the local folder
            co_await Async::sleep(tableStep);
            continue;
        }
        attempt->m_folder->seal();
        const QFuture<bool> check = attempt->m_questions->isMounted();
        const bool answered = co_await Async::finishesWithin(check, answerStep);
        mounted = answered && check.result();
        if (answered && !mounted) // sshfs has just ended, or the mount is not in place yet
            co_await Async::sleep(answerStep);
    }
}

void MountAttempt::throwIfCancelled() const {
    if (m_cancelled)
        throw MounterError(MounterError::Case::mountFailed, QStringLiteral("Der Vorgang wurde abgebrochen."));
}

void MountAttempt::cancel(UnmountLimits limits) {
    m_cancelled = true;
    m_clearLimits = limits;
    m_process->terminate();
}

void MountAttempt::kill() {
    m_process->kill();
}
