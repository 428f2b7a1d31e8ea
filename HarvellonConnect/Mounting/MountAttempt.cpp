#include "Mounting/MountAttempt.h"

#include "Mounting/KnownHosts.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MountQuestion.h"
#include "Mounting/MounterError.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/SSHFSReadiness.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Native/MountTable.h"

#include <QDeadlineTimer>

#include <algorithm>

namespace {
constexpr std::chrono::seconds mountLimit{15};
constexpr std::chrono::milliseconds pollingStep{150};
constexpr std::chrono::milliseconds tableStep{20}; // a look at the mount table costs next to nothing
constexpr std::chrono::seconds staleLimit{2};
// A beginning ssh takes some 80 ms of a processor; twenty at once keep the panel waiting for as long.
constexpr std::chrono::milliseconds startStep{80};

using Clock = std::chrono::steady_clock;

/// When the caller may start its sshfs.
Clock::time_point turnToStart() {
    static Clock::time_point next;
    const Clock::time_point turn = std::max(Clock::now(), next);
    next = turn + startStep;
    return turn;
}
} // namespace

MountAttempt::MountAttempt(HostSystem host, Shell& shell, Project project)
    : m_host(std::move(host)), m_shell(shell), m_project(std::move(project)),
      m_process(std::make_shared<SSHFSProcess>()) {
    m_over.start();
}

MountAttempt::~MountAttempt() = default;

QString MountAttempt::mountPoint() const {
    return m_host.mountRoot() + QLatin1Char('/') + m_project.domain;
}

QCoro::Task<std::shared_ptr<SSHFSProcess>> MountAttempt::run(std::shared_ptr<MountAttempt> attempt) {
    std::exception_ptr failure;
    try {
        co_await start(attempt);
        co_await waitUntilMounted(attempt);
    } catch (const MounterError&) {
        failure = std::current_exception();
    }
    if (!failure)
        co_return attempt->m_process;
    const QString mountPoint = attempt->mountPoint();
    co_await clearLeftovers(attempt->m_host, attempt->m_shell, attempt->m_process, mountPoint,
                            attempt->m_patience);
    std::rethrow_exception(failure);
}

QCoro::Task<> MountAttempt::start(std::shared_ptr<MountAttempt> attempt) {
    attempt->failWhenGivenUp();
    for (const Clock::time_point turn = turnToStart(); Clock::now() < turn;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(turn - Clock::now());
        co_await Async::sleep(std::min(left, startStep)); // who gives up is not kept waiting
        attempt->failWhenGivenUp();
    }
    const std::optional<QString> sshfs = sshfsPath(attempt->m_host);
    if (!sshfs)
        throw MounterError(MounterError::Case::sshfsNotFound);

    const QString mountPoint = attempt->mountPoint();
    // The table tells of live, silent and dead mounts alike, and asking it waits for no server.
    if (MountTable::lists(mountPoint)) {
        qCInfo(lcSSHFSMounter, "mount: stale mount at %s, forcing unmount", qUtf8Printable(mountPoint));
        co_await forceUnmount(attempt->m_host, attempt->m_shell, mountPoint, staleLimit);
        if (MountTable::lists(mountPoint))
            throw MounterError(MounterError::Case::mountPointOccupied, mountPoint);
        attempt->failWhenGivenUp();
    }
    attempt->m_folder.emplace(mountPoint);
    attempt->m_coversFiles = attempt->m_folder->holdsFiles();
    prepareKnownHosts(attempt->m_host);
    qCInfo(lcSSHFSMounter, "mount: spawning sshfs for %s", qUtf8Printable(attempt->m_project.domain));
    attempt->m_process->start(*sshfs, sshfsArguments(attempt->m_host, attempt->m_project, mountPoint));
}

QCoro::Task<> MountAttempt::waitUntilMounted(std::shared_ptr<MountAttempt> attempt) {
    const QString domain = attempt->m_project.domain;
    const QString mountPoint = attempt->mountPoint();
    const SSHFSProcess& process = *attempt->m_process;
    const QDeadlineTimer deadline(mountLimit);
    MountQuestion question(mountPoint);
    bool mounted = false;
    for (;;) {
        attempt->failWhenGivenUp();
        if (deadline.hasExpired()) {
            qCInfo(lcSSHFSMounter, "mount: timeout for %s", qUtf8Printable(domain));
            throw MounterError(MounterError::Case::mountTimeout);
        }
        if (!process.startFailure().isEmpty())
            throw MounterError(MounterError::Case::mountFailed, process.startFailure());
        if (!process.isRunning())
            throw MounterError::fromSSHFS(process.errorText(), domain);
        if (mounted)
            co_return;

        if (!MountTable::lists(mountPoint)) { // nobody there to be asked
            co_await Async::sleep(tableStep);
            continue;
        }
        attempt->m_folder->seal();
        // The server's answer ends the pause early.
        const std::optional<bool> answer = co_await question.answer(pollingStep);
        mounted = answer.value_or(false);
        if (answer && !mounted)
            co_await Async::sleep(pollingStep);
    }
}

void MountAttempt::failWhenGivenUp() const {
    if (m_givenUp)
        throw MounterError(MounterError::Case::mountFailed, QStringLiteral("Der Vorgang wurde abgebrochen."));
}

void MountAttempt::giveUp(Patience patience) {
    m_givenUp = true;
    m_patience = patience;
    m_process->hangUp();
}

void MountAttempt::kill() {
    m_process->kill();
}
