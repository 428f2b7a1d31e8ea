#include "Mounting/SSHFSMounter.h"

#include "Mounting/Ending/LeftoverMounts.h"
#include "Mounting/Ending/ServerState.h"
#include "Mounting/Ending/Unmounting.h"
#include "Mounting/MountPointFolder.h"
#include "Mounting/MountQuestions.h"
#include "Mounting/MountsInProgress.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/WarmUp/WarmUp.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Tables/MountTable.h"

#include <QCoroFuture>
#include <QDeadlineTimer>

#include <sys/stat.h>

namespace {
constexpr std::chrono::milliseconds afterKill{1500}; // unmounts that were blocked by a killed sshfs end soon
static_assert(MountLimits{}.killAfter + afterKill < std::chrono::seconds(5)); // as the header promises

MounterError closedRefusal() {
    return MounterError(MounterError::Case::mountFailed,
                        QStringLiteral("Alle Verbindungen werden gerade getrennt."));
}
} // namespace

SSHFSMounter::SSHFSMounter(HostSystem host, Shell& shell, MountLimits limits, QObject* parent)
    : QObject(parent), m_host(std::move(host)), m_shell(shell), m_limits(limits),
      m_startQueue(std::make_shared<StartQueue>(limits.startInterval)),
      m_running(std::make_shared<MountsInProgress>()) {
    connect(&m_kept, &KeptMounts::ended, this, &SSHFSMounter::keptMountEnded);
}

SSHFSMounter::~SSHFSMounter() {
    for (const auto& attempt : std::as_const(m_running->attempts))
        attempt->cancel(m_limits.quit);
}

bool SSHFSMounter::isIdle() const {
    return m_sessions.isEmpty() && m_running->attempts.isEmpty() && m_running->unmounts.isEmpty() &&
           m_kept.sessions().isEmpty();
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
    const std::optional<QFuture<UnmountResult>> unmount = m_running->unmountOf(domain);
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
    if (guard && guard->m_sessions.contains(domain))
        co_return guard->m_sessions.value(domain); // it was in use, and stayed
    const MountSession session = co_await MountAttempt::run(attempt);
    if (guard)
        guard->addSession(session);
    co_return session;
}

void SSHFSMounter::addSession(const MountSession& session) {
    if ((session.folderMode & S_IWUSR) != 0) // otherwise sealed by an earlier mount
        m_folderModes.insert(session.domain, session.folderMode);
    m_sessions.insert(session.domain, session);
    watchEnd(session);
    session.warmUp->start();
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
    const QPointer<SSHFSMounter> guard(this);
    while (const std::optional<QFuture<UnmountResult>> unmount = m_running->unmountOf(domain)) {
        QFuture<UnmountResult> unmounted = *unmount;
        const UnmountResult result = co_await unmounted;
        if (!guard || !m_sessions.contains(domain)) // otherwise it was left mounted because it is in use
            co_return result;
    }
    if (!m_sessions.contains(domain)) {
        qCInfo(lcSSHFSMounter, "unmount: no session for %s", qUtf8Printable(domain));
        releaseFolder(domain); // what was lost or detached before is not wanted back
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
    const std::function<bool()> keep = [guard, session, limits] {
        const bool mayKeep = guard && !guard->m_closed && limits.keepUntilClosed;
        if (mayKeep)
            guard->m_kept.keep(session);
        return mayKeep;
    };
    inProgress.result = co_await endAfterUnmount(host, shell, session, outcome, limits, keep);
    if (guard) {
        guard->m_sessions.remove(session.domain);
        if (inProgress.result == UnmountResult::ended)
            guard->releaseFolder(session.domain);
    }
    if (outcome.complaint)
        inProgress.fail(MounterError(MounterError::Case::unmountFailed, *outcome.complaint));
    co_return inProgress.result;
}

void SSHFSMounter::keptMountEnded(const QString& domain, qint32 exitCode) {
    releaseFolder(domain);
    if (exitCode != 0 && !m_closed && onKeptMountLost)
        onKeptMountLost(domain, exitCode);
}

void SSHFSMounter::releaseFolder(const QString& domain) const {
    if (!m_sessions.contains(domain) && !m_running->attempts.contains(domain) && !m_kept.contains(domain))
        MountPointFolder::release(m_host.mountPoint(domain), m_folderModes.value(domain, S_IRWXU));
}

bool SSHFSMounter::isOccupied(const QString& domain) const {
    return !m_sessions.contains(domain) && !m_running->unmounts.contains(domain) &&
           MountTable::lists(m_host.mountPoint(domain));
}

QStringList SSHFSMounter::leftBehind() const {
    QStringList domains = ownMountsBelow(m_host);
    domains.removeIf([this](const QString& domain) {
        return m_running->attempts.contains(domain) || m_sessions.contains(domain) ||
               m_running->unmounts.contains(domain);
    });
    return domains;
}

QCoro::Task<bool> SSHFSMounter::clearLeftBehind(QString domain) {
    const UnmountInProgress inProgress(m_running, domain); // a mount that is asked for meanwhile waits
    const QString mountPoint = m_host.mountPoint(domain);
    co_return co_await unmountGently(m_host, m_shell, mountPoint, m_limits.unmount.command);
}

std::optional<QFuture<bool>> SSHFSMounter::ask(const QString& domain,
                                               const std::function<bool()>& question) const {
    const auto session = m_sessions.constFind(domain);
    return session == m_sessions.constEnd() ? std::nullopt : std::optional(session->questions->ask(question));
}

void SSHFSMounter::warmUp(const QString& domain) {
    const auto session = m_sessions.constFind(domain);
    if (session != m_sessions.constEnd() && !m_running->unmounts.contains(domain))
        session->warmUp->start();
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
    const UnmountLimits limits = m_limits.sleep;
    disconnect(session.process.get(), &SSHFSProcess::ended, this, nullptr);
    co_await Async::finishesWithin(session.warmUp->cancel(), limits.command);
    co_await unmountGently(m_host, m_shell, session.mountPoint, limits.command);
    // A command that was too slow may have unmounted all the same.
    const bool detached = !MountTable::lists(session.mountPoint) || !session.process->isRunning();
    if (detached)
        co_await Async::finishesWithin(session.process->end(), limits.grace);
    if (!guard)
        co_return detached;
    if (!detached) {
        watchEnd(session);
        co_return false;
    }
    m_sessions.remove(session.domain);
    if (session.process->isRunning()) // used by a program that sees other mounts than we do
        m_kept.keep(session);
    co_return true;
}

QCoro::Task<> SSHFSMounter::unmountAll() {
    const QPointer<SSHFSMounter> guard(this);
    const QDeadlineTimer deadline(m_limits.killAfter);
    m_closed = true;
    for (const MountSession& session : m_kept.sessions())
        session.process->terminate();
    QList<QFuture<void>> ends;
    // More than once: a mount that was in use before a sleep may have stayed after the first wait.
    while (!(ends = endsOfAll()).isEmpty()) {
        const std::chrono::milliseconds left(deadline.remainingTime());
        const bool inTime = co_await Async::allFinishWithin(ends, left);
        if (!guard)
            co_return;
        if (!inTime) {
            killAll();
            co_await Async::allFinishWithin(ends, afterKill);
            co_return;
        }
    }
}

QList<QFuture<void>> SSHFSMounter::endsOfAll() {
    for (const QString& domain : m_running->attempts.keys() + m_sessions.keys())
        unmountQuietly(domain, m_limits.quit);
    QList<QFuture<void>> ends;
    for (const auto& unmount : std::as_const(m_running->unmounts))
        ends.append(QFuture<void>(unmount));
    for (const auto& attempt : std::as_const(m_running->attempts))
        ends.append(attempt->finished());
    for (const MountSession& session : m_kept.sessions()) {
        if (session.process->isRunning())
            ends.append(session.process->end());
    }
    return ends;
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
    for (const MountSession& session : m_kept.sessions())
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
