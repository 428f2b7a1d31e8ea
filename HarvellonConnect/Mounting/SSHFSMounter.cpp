#include "Mounting/SSHFSMounter.h"

#include "Directory/PlainDomain.h"
#include "Mounting/MountAttempt.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/Unmounting.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Native/MountTable.h"

#include <QCoroFuture>
#include <QDeadlineTimer>
#include <QPromise>

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

QString printable(const QString& text) {
    QString shown;
    for (const QChar character : text)
        shown.append(character.isPrint() ? character : QChar(QChar::ReplacementCharacter));
    return shown;
}

MounterError refusal(const QString& reason) {
    return MounterError(MounterError::Case::mountFailed, reason);
}
} // namespace

/// Registers an attempt for as long as it exists. Its end tells everyone who waits for the attempt.
class SSHFSMounter::MountInProgress {
  public:
    MountInProgress(SSHFSMounter* mounter, std::shared_ptr<MountAttempt> attempt)
        : m_mounter(mounter), m_attempt(std::move(attempt)) {
        mounter->m_attempts.insert(m_attempt->domain(), m_attempt);
    }

    ~MountInProgress() {
        if (m_mounter)
            m_mounter->m_attempts.remove(m_attempt->domain());
        m_attempt->markFinished();
    }

    Q_DISABLE_COPY_MOVE(MountInProgress)

  private:
    QPointer<SSHFSMounter> m_mounter;
    std::shared_ptr<MountAttempt> m_attempt;
};

/// Registers an unmount for as long as it exists. Its end tells everyone who waits for the unmount.
class SSHFSMounter::UnmountInProgress {
  public:
    UnmountInProgress(SSHFSMounter* mounter, QString domain)
        : m_mounter(mounter), m_domain(std::move(domain)) {
        m_finished.start();
        mounter->m_unmounts.insert(m_domain, m_finished.future());
    }

    ~UnmountInProgress() {
        if (m_mounter)
            m_mounter->m_unmounts.remove(m_domain);
        m_finished.finish();
    }

    Q_DISABLE_COPY_MOVE(UnmountInProgress)

  private:
    QPointer<SSHFSMounter> m_mounter;
    QString m_domain;
    QPromise<void> m_finished;
};

SSHFSMounter::SSHFSMounter(HostSystem host, Shell& shell, MountLimits limits, QObject* parent)
    : QObject(parent), m_host(std::move(host)), m_shell(shell), m_limits(limits),
      m_startQueue(std::make_shared<StartQueue>(limits.startInterval)) {}

SSHFSMounter::~SSHFSMounter() {
    for (const auto& attempt : std::as_const(m_attempts))
        attempt->cancel(m_limits.quit);
}

QSet<QString> SSHFSMounter::connectedDomains() const {
    return QSet<QString>(m_sessions.keyBegin(), m_sessions.keyEnd());
}

std::optional<QString> SSHFSMounter::mountPoint(const QString& domain) const {
    const auto session = m_sessions.constFind(domain);
    return session == m_sessions.constEnd() ? std::nullopt : std::optional(session->mountPoint);
}

void SSHFSMounter::refuseUnlessMountable(const Project& project) const {
    if (!isPlainDomain(project.domain))
        throw refusal(QStringLiteral("Die Domain „%1\" ist nicht zulässig.").arg(printable(project.domain)));
    if (project.path.contains(QChar(QChar::Null)))
        throw refusal(QStringLiteral("Der Pfad des Projekts auf dem Server ist nicht zulässig."));
    if (m_closing > 0)
        throw refusal(QStringLiteral("Alle Verbindungen werden gerade getrennt."));
    if (m_attempts.contains(project.domain))
        throw refusal(QStringLiteral("%1 wird bereits verbunden.").arg(project.domain));
}

QCoro::Task<MountSession> SSHFSMounter::mount(Project project) {
    refuseUnlessMountable(project);
    const QString domain = project.domain;
    const std::optional<QFuture<void>> unmount = unmountOf(domain);
    if (m_sessions.contains(domain) && !unmount)
        co_return m_sessions.value(domain);

    const auto attempt = std::make_shared<MountAttempt>(m_host, m_shell, project, m_limits, m_startQueue);
    const MountInProgress inProgress(this, attempt);
    const QPointer<SSHFSMounter> guard(this);
    if (unmount) {
        QFuture<void> unmounted = *unmount;
        co_await unmounted;
    }
    const std::shared_ptr<SSHFSProcess> process = co_await MountAttempt::run(attempt);
    const MountSession session{domain, attempt->mountPoint(), process, QDateTime::currentDateTime(),
                               attempt->coversFiles()};
    if (guard)
        guard->addSession(session);
    co_return session;
}

void SSHFSMounter::addSession(const MountSession& session) {
    const QString domain = session.domain;
    m_sessions.insert(domain, session);
    connect(session.process.get(), &SSHFSProcess::ended, this,
            [this, domain](qint32 exitCode) { handleUnexpectedEnd(domain, exitCode); });
    qCInfo(lcSSHFSMounter, "mount: success %s at %s", qUtf8Printable(domain),
           qUtf8Printable(session.mountPoint));
}

QCoro::Task<bool> SSHFSMounter::unmount(QString domain) {
    return unmountWithin(domain, m_limits.unmount);
}

QCoro::Task<bool> SSHFSMounter::unmountWithin(QString domain, UnmountLimits limits) {
    if (const std::shared_ptr<MountAttempt> attempt = m_attempts.value(domain)) {
        attempt->cancel(limits);
        QFuture<void> finished = attempt->finished();
        co_await finished;
        co_return false;
    }
    if (const std::optional<QFuture<void>> unmount = unmountOf(domain)) {
        QFuture<void> unmounted = *unmount;
        co_await unmounted; // its caller gets the outcome
        co_return false;
    }
    if (!m_sessions.contains(domain)) {
        qCInfo(lcSSHFSMounter, "unmount: no session for %s", qUtf8Printable(domain));
        co_return false;
    }
    const MountSession session = m_sessions.value(domain);
    co_return co_await takeDown(session, limits);
}

QCoro::Task<bool> SSHFSMounter::takeDown(MountSession session, UnmountLimits limits) {
    qCInfo(lcSSHFSMounter, "unmount: %s", qUtf8Printable(session.domain));
    const UnmountInProgress inProgress(this, session.domain);
    const QPointer<SSHFSMounter> guard(this);
    const HostSystem host = m_host;
    Shell& shell = m_shell;
    disconnect(session.process.get(), &SSHFSProcess::ended, this, nullptr); // its end is expected from now on
    const UnmountOutcome outcome = co_await unmountByCommands(host, shell, session.mountPoint, limits);
    const bool mayKeep = outcome.inUse && limits.keepUntilClosed;
    const bool kept = co_await endProcess(guard, host, shell, session, limits, mayKeep);
    if (guard)
        guard->m_sessions.remove(session.domain);
    if (outcome.complaint)
        throw MounterError(MounterError::Case::unmountFailed, *outcome.complaint);
    co_return kept;
}

QCoro::Task<bool> SSHFSMounter::endProcess(QPointer<SSHFSMounter> mounter, HostSystem host, Shell& shell,
                                           MountSession session, UnmountLimits limits, bool mayKeep) {
    bool keep = false;
    if (mayKeep) {
        const bool inUse = co_await servesOpenFiles(session.process, limits.grace);
        keep = inUse && mounter && mounter->m_closing == 0;
    }
    if (keep)
        mounter->keepUntilClosed(session.process); // ending it now would cut off a file being written
    else
        co_await clearLeftovers(host, shell, session.process, session.mountPoint, limits);
    co_return keep;
}

void SSHFSMounter::keepUntilClosed(const std::shared_ptr<SSHFSProcess>& process) {
    m_keptUntilClosed.append(process);
    const std::weak_ptr<SSHFSProcess> kept = process;
    // Queued, because removing the last reference deletes the process that emits the signal.
    connect(
        process.get(), &SSHFSProcess::ended, this, [this, kept] { m_keptUntilClosed.removeOne(kept.lock()); },
        Qt::QueuedConnection);
}

std::optional<QFuture<void>> SSHFSMounter::unmountOf(const QString& domain) const {
    const auto unmount = m_unmounts.constFind(domain);
    return unmount == m_unmounts.constEnd() ? std::nullopt : std::optional(*unmount);
}

QStringList SSHFSMounter::leftBehind() const {
    QStringList domains = MountTable::mountedBelow(m_host.mountRoot());
    domains.removeIf([this](const QString& domain) {
        return m_attempts.contains(domain) || m_sessions.contains(domain) || m_unmounts.contains(domain);
    });
    return domains;
}

QCoro::Task<bool> SSHFSMounter::clearLeftBehind(QString domain) {
    HostSystem gentle = m_host;
    gentle.unmountCommands.removeOne(m_host.forcedUnmount);
    Shell& shell = m_shell;
    const UnmountInProgress inProgress(this, domain); // a mount that is asked for meanwhile waits
    const UnmountLimits limits = m_limits.unmount;
    const QString mountPoint = m_host.mountRoot() + QLatin1Char('/') + domain;
    const UnmountOutcome outcome = co_await unmountByCommands(gentle, shell, mountPoint, limits);
    co_return !outcome.complaint;
}

QCoro::Task<> SSHFSMounter::unmountAll() {
    const QPointer<SSHFSMounter> guard(this);
    ++m_closing;
    const QStringList domains = m_attempts.keys() + m_sessions.keys();
    for (const QString& domain : domains)
        unmountQuietly(domain, m_limits.quit);
    QList<QFuture<void>> ends = m_unmounts.values();
    for (const auto& process : std::as_const(m_keptUntilClosed)) {
        process->terminate();
        ends.append(process->end());
    }
    for (const auto& attempt : std::as_const(m_attempts))
        ends.append(attempt->finished());
    const bool inTime = co_await allFinishWithin(ends, m_limits.killAfter);
    if (!inTime && guard) {
        killAll();
        co_await allFinishWithin(ends, afterKill);
    }
    if (guard)
        --m_closing;
}

QCoro::Task<> SSHFSMounter::unmountQuietly(QString domain, UnmountLimits limits) {
    try {
        co_await unmountWithin(domain, limits);
    } catch (const MounterError&) {
        // The program is ending, so there is no user to tell.
    }
}

void SSHFSMounter::killAll() {
    for (const auto& attempt : std::as_const(m_attempts))
        attempt->kill();
    for (const MountSession& session : std::as_const(m_sessions))
        session.process->kill();
    for (const auto& process : std::as_const(m_keptUntilClosed))
        process->kill();
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
    const UnmountInProgress inProgress(this, session.domain);
    co_await forceUnmount(m_host, m_shell, session.mountPoint, m_limits.unmount.command);
}
