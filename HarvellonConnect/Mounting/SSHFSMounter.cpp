#include "Mounting/SSHFSMounter.h"

#include "Mounting/LeftoverMounts.h"
#include "Mounting/MountPointFolder.h"
#include "Mounting/MountQuestions.h"
#include "Mounting/MountsInProgress.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/ServerState.h"
#include "Mounting/Unmounting.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Tables/MountTable.h"

#include <QCoroFuture>
#include <QDeadlineTimer>

namespace {
constexpr std::chrono::milliseconds afterKill{1500}; // unmounts that were blocked by a killed sshfs end soon
static_assert(MountLimits{}.killAfter + afterKill < std::chrono::seconds(5)); // as the header promises

QCoro::Task<bool> allFinishWithin(QList<QFuture<void>> futures, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    for (const QFuture<void>& future : futures) {
        const std::chrono::milliseconds left(deadline.remainingTime());
        const bool finished = co_await Async::finishesWithin(future, left);
        if (!finished)
            co_return false;
    }
    co_return true;
}

MounterError closedRefusal() {
    return MounterError(MounterError::Case::mountFailed,
                        QStringLiteral("Alle Verbindungen werden gerade getrennt."));
}

/// Waits for an unmount, however it goes.
QCoro::Task<> endOf(QFuture<UnmountResult> unmount) {
    try {
        co_await unmount;
    } catch (const MounterError&) {
        // Its caller has been told.
    }
}
} // namespace

SSHFSMounter::SSHFSMounter(HostSystem host, Shell& shell, MountLimits limits, QObject* parent)
    : QObject(parent), m_host(std::move(host)), m_shell(shell), m_limits(limits),
      m_startQueue(std::make_shared<StartQueue>(limits.startInterval)),
      m_running(std::make_shared<MountsInProgress>()) {}

SSHFSMounter::~SSHFSMounter() {
    for (const auto& attempt : std::as_const(m_running->attempts))
        attempt->cancel(m_limits.quit);
}

bool SSHFSMounter::isIdle() const {
    return m_sessions.isEmpty() && m_running->attempts.isEmpty() && m_running->unmounts.isEmpty() &&
           m_keptUntilClosed.isEmpty();
}

bool SSHFSMounter::isMounting(const QString& domain) const {
    return m_running->attempts.contains(domain);
}

QSet<QString> SSHFSMounter::connectedDomains() const {
    return QSet<QString>(m_sessions.keyBegin(), m_sessions.keyEnd());
}

std::optional<QString> SSHFSMounter::mountPoint(const QString& domain) const {
    const auto session = m_sessions.constFind(domain);
    return session == m_sessions.constEnd() ? std::nullopt : std::optional(session->mountPoint);
}

void SSHFSMounter::refuseUnlessMountable(const Project& project) const {
    throwUnlessPlain(project);
    if (m_closed)
        throw closedRefusal();
    if (m_running->attempts.contains(project.domain))
        throw MounterError(MounterError::Case::mountFailed,
                           QStringLiteral("%1 wird bereits verbunden.").arg(project.domain));
}

QCoro::Task<MountSession> SSHFSMounter::mount(Project project, Links links) {
    refuseUnlessMountable(project);
    const QString domain = project.domain;
    const std::optional<QFuture<UnmountResult>> unmount = unmountOf(domain);
    if (m_sessions.contains(domain) && !unmount)
        co_return m_sessions.value(domain);

    const auto attempt =
        std::make_shared<MountAttempt>(m_host, m_shell, project, links, m_limits, m_startQueue);
    const MountInProgress inProgress(m_running, attempt);
    const QPointer<SSHFSMounter> guard(this);
    if (unmount)
        co_await endOf(*unmount);
    if (guard && guard->m_closed)
        throw closedRefusal();
    const MountSession session = co_await MountAttempt::run(attempt);
    if (guard)
        guard->addSession(session);
    co_return session;
}

void SSHFSMounter::addSession(const MountSession& session) {
    m_sessions.insert(session.domain, session);
    watchEnd(session);
    qCInfo(lcSSHFSMounter, "mount: success %s at %s", qUtf8Printable(session.domain),
           qUtf8Printable(session.mountPoint));
}

void SSHFSMounter::watchEnd(const MountSession& session) {
    connect(session.process.get(), &SSHFSProcess::ended, this,
            [this, domain = session.domain](qint32 exitCode) { handleUnexpectedEnd(domain, exitCode); });
}

QCoro::Task<UnmountResult> SSHFSMounter::unmountWithin(QString domain, UnmountLimits limits) {
    if (const std::shared_ptr<MountAttempt> attempt = m_running->attempts.value(domain)) {
        attempt->cancel(limits);
        QFuture<void> finished = attempt->finished();
        co_await finished;
        co_return UnmountResult::ended;
    }
    if (const std::optional<QFuture<UnmountResult>> unmount = unmountOf(domain)) {
        QFuture<UnmountResult> unmounted = *unmount;
        co_return co_await unmounted;
    }
    if (!m_sessions.contains(domain)) {
        qCInfo(lcSSHFSMounter, "unmount: no session for %s", qUtf8Printable(domain));
        co_return UnmountResult::ended;
    }
    const MountSession session = m_sessions.value(domain);
    co_return co_await takeDown(session, limits);
}

QCoro::Task<UnmountResult> SSHFSMounter::takeDown(MountSession session, UnmountLimits limits) {
    qCInfo(lcSSHFSMounter, "unmount: %s", qUtf8Printable(session.domain));
    UnmountInProgress inProgress(m_running, session.domain);
    const QPointer<SSHFSMounter> guard(this);
    const HostSystem host = m_host;
    Shell& shell = m_shell;
    disconnect(session.process.get(), &SSHFSProcess::ended, this, nullptr); // its end is expected from now on
    const UnmountOutcome outcome = co_await unmountByCommands(host, shell, session, limits);
    const bool mayKeep = outcome.inUse && limits.keepUntilClosed;
    inProgress.result = co_await endProcess(guard, host, shell, session, limits, mayKeep);
    if (outcome.cutOff)
        inProgress.result = UnmountResult::cutOff;
    MountPointFolder::release(session.mountPoint, session.folderMode);
    if (guard)
        guard->m_sessions.remove(session.domain);
    if (outcome.complaint)
        inProgress.fail(MounterError(MounterError::Case::unmountFailed, *outcome.complaint));
    co_return inProgress.result;
}

QCoro::Task<UnmountResult> SSHFSMounter::endProcess(QPointer<SSHFSMounter> mounter, HostSystem host,
                                                    Shell& shell, MountSession session, UnmountLimits limits,
                                                    bool mayKeep) {
    if (mayKeep) {
        const QList<MountSession> mounts{session};
        const QStringList transferring = co_await transferringDomains(mounts, limits.grace);
        const bool inUse = session.process->isRunning();
        if (inUse && mounter && !mounter->m_closed) {
            mounter->keepUntilClosed(session); // ending it now would cut off a file being written
            co_return !transferring.isEmpty() ? UnmountResult::writing : UnmountResult::filesOpen;
        }
    }
    co_await clearLeftovers(host, shell, session.process, session.mountPoint, limits);
    co_return UnmountResult::ended;
}

void SSHFSMounter::keepUntilClosed(const MountSession& session) {
    m_keptUntilClosed.append(session);
    const SSHFSProcess* const kept = session.process.get();
    // Queued, because removing the last reference deletes the process that emits the signal.
    connect(
        kept, &SSHFSProcess::ended, this,
        [this, kept] {
            m_keptUntilClosed.removeIf(
                [kept](const MountSession& each) { return each.process.get() == kept; });
        },
        Qt::QueuedConnection);
}

std::optional<QFuture<UnmountResult>> SSHFSMounter::unmountOf(const QString& domain) const {
    const auto unmount = m_running->unmounts.constFind(domain);
    return unmount == m_running->unmounts.constEnd() ? std::nullopt : std::optional(*unmount);
}

QStringList SSHFSMounter::leftBehind() const {
    QStringList domains = ownMountsBelow(m_host.mountRoot());
    domains.removeIf([this](const QString& domain) {
        return m_running->attempts.contains(domain) || m_sessions.contains(domain) ||
               m_running->unmounts.contains(domain);
    });
    return domains;
}

QCoro::Task<bool> SSHFSMounter::clearLeftBehind(QString domain) {
    const UnmountInProgress inProgress(m_running, domain); // a mount that is asked for meanwhile waits
    const QString mountPoint = m_host.mountRoot() + QLatin1Char('/') + domain;
    const bool unmounted = co_await unmountGently(m_host, m_shell, mountPoint, m_limits.unmount.command);
    if (unmounted)
        MountPointFolder::release(mountPoint, 0); // nobody knows the permissions from before
    co_return unmounted;
}

std::optional<QFuture<bool>> SSHFSMounter::ask(const QString& domain,
                                               const std::function<bool()>& question) const {
    const auto session = m_sessions.constFind(domain);
    return session == m_sessions.constEnd() ? std::nullopt : std::optional(session->questions->ask(question));
}

QCoro::Task<QList<Project>> SSHFSMounter::detachIdle() {
    QList<Project> detached;
    std::vector<std::pair<Project, QCoro::Task<bool>>> detaching;
    for (const MountSession& session : m_sessions.values()) {
        if (!m_running->unmounts.contains(session.domain))
            detaching.emplace_back(session.project, detach(session));
    }
    for (auto& [project, task] : detaching) {
        const bool ended = co_await task;
        if (ended)
            detached.append(project);
    }
    co_return detached;
}

QCoro::Task<bool> SSHFSMounter::detach(MountSession session) {
    const UnmountInProgress inProgress(m_running, session.domain);
    const QPointer<SSHFSMounter> guard(this);
    const HostSystem host = m_host;
    Shell& shell = m_shell;
    const UnmountLimits limits = m_limits.sleep;
    disconnect(session.process.get(), &SSHFSProcess::ended, this, nullptr);
    const bool unmounted = co_await unmountGently(host, shell, session.mountPoint, limits.command);
    if (unmounted)
        co_await SSHFSProcess::stop(session.process, limits.grace);
    if (!guard)
        co_return unmounted;
    if (!session.process->isRunning()) {
        m_sessions.remove(session.domain);
        co_return true;
    }
    watchEnd(session);
    co_return false;
}

QCoro::Task<> SSHFSMounter::unmountAll() {
    const QPointer<SSHFSMounter> guard(this);
    m_closed = true;
    const QStringList domains = m_running->attempts.keys() + m_sessions.keys();
    for (const QString& domain : domains)
        unmountQuietly(domain, m_limits.quit);
    QList<QFuture<void>> ends;
    for (const auto& unmount : std::as_const(m_running->unmounts))
        ends.append(QFuture<void>(unmount));
    for (const MountSession& session : std::as_const(m_keptUntilClosed)) {
        session.process->terminate();
        ends.append(session.process->end());
    }
    for (const auto& attempt : std::as_const(m_running->attempts))
        ends.append(attempt->finished());
    const bool inTime = co_await allFinishWithin(ends, m_limits.killAfter);
    if (inTime || !guard)
        co_return;
    killAll();
    co_await allFinishWithin(ends, afterKill);
}

QCoro::Task<> SSHFSMounter::unmountQuietly(QString domain, UnmountLimits limits) {
    try {
        co_await unmountWithin(domain, limits);
    } catch (const MounterError&) {
        // The program is ending, so there is no user to tell.
    }
}

void SSHFSMounter::killAll() {
    for (const auto& attempt : std::as_const(m_running->attempts))
        attempt->kill();
    for (const MountSession& session : std::as_const(m_sessions))
        session.process->kill();
    for (const MountSession& session : std::as_const(m_keptUntilClosed))
        session.process->kill();
}

void SSHFSMounter::handleUnexpectedEnd(const QString& domain, qint32 exitCode) {
    qCInfo(lcSSHFSMounter, "sshfs for %s exited unexpectedly status=%d", qUtf8Printable(domain), exitCode);
    clearDeadMount(m_sessions.take(domain));
    if (onUnexpectedTermination)
        onUnexpectedTermination(domain, exitCode);
}

QCoro::Task<> SSHFSMounter::clearDeadMount(MountSession session) {
    if (!MountTable::lists(session.mountPoint))
        co_return;
    const UnmountInProgress inProgress(m_running, session.domain);
    co_await forceUnmount(m_host, m_shell, session.mountPoint, m_limits.unmount.command);
}
