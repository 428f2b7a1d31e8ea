#include "Mounting/SSHFSMounter.h"

#include "Directory/PlainDomain.h"
#include "Mounting/MountAttempt.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Native/MountTable.h"

#include <QCoroFuture>
#include <QDeadlineTimer>
#include <QPointer>
#include <QPromise>

namespace {
constexpr std::chrono::milliseconds lastResort{3000}; // what hangs that long is freed by killing its sshfs
constexpr std::chrono::milliseconds afterKill{1500};

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

/// Lives while a mount of the domain is taken down; others find its future and wait.
class SSHFSMounter::Ending {
  public:
    Ending(SSHFSMounter* mounter, QString domain) : m_mounter(mounter), m_domain(std::move(domain)) {
        m_promise.start();
        mounter->m_endings.insert(m_domain, m_promise.future());
    }

    ~Ending() {
        if (m_mounter)
            m_mounter->m_endings.remove(m_domain);
        m_promise.finish();
    }

    Q_DISABLE_COPY_MOVE(Ending)

  private:
    QPointer<SSHFSMounter> m_mounter;
    QString m_domain;
    QPromise<void> m_promise;
};

SSHFSMounter::SSHFSMounter(HostSystem host, Shell& shell, QObject* parent)
    : QObject(parent), m_host(std::move(host)), m_shell(shell) {}

SSHFSMounter::~SSHFSMounter() {
    for (const auto& attempt : std::as_const(m_attempts))
        attempt->giveUp(hastyPatience);
}

QSet<QString> SSHFSMounter::connectedDomains() const {
    return QSet<QString>(m_sessions.keyBegin(), m_sessions.keyEnd());
}

std::optional<QString> SSHFSMounter::mountPoint(const QString& domain) const {
    const auto session = m_sessions.constFind(domain);
    return session == m_sessions.constEnd() ? std::nullopt : std::optional(session->mountPoint);
}

QCoro::Task<MountSession> SSHFSMounter::mount(Project project) {
    const QString domain = project.domain;
    if (!isPlainDomain(domain))
        throw refusal(QStringLiteral("Die Domain „%1\" ist nicht zulässig.").arg(printable(domain)));
    if (project.path.contains(QChar(QChar::Null)))
        throw refusal(QStringLiteral("Der Pfad des Projekts auf dem Server ist nicht zulässig."));
    if (m_closing > 0)
        throw refusal(QStringLiteral("Alle Verbindungen werden gerade getrennt."));
    if (m_attempts.contains(domain))
        throw refusal(QStringLiteral("%1 wird bereits verbunden.").arg(domain));
    const bool isEnding = m_endings.contains(domain);
    if (!isEnding && m_sessions.contains(domain))
        co_return m_sessions.value(domain);

    const auto attempt = std::make_shared<MountAttempt>(m_host, m_shell, project);
    m_attempts.insert(domain, attempt);
    const QPointer<SSHFSMounter> guard(this);
    std::optional<MountSession> session;
    std::exception_ptr failure;
    try {
        if (isEnding) {
            QFuture<void> ending = m_endings.value(domain);
            co_await ending;
        }
        const std::shared_ptr<SSHFSProcess> process = co_await MountAttempt::run(attempt);
        session = MountSession{domain, attempt->mountPoint(), process, QDateTime::currentDateTime(),
                               attempt->coversFiles()};
    } catch (const MounterError&) {
        failure = std::current_exception();
    }
    if (guard)
        m_attempts.remove(domain);
    if (guard && session) {
        m_sessions.insert(domain, *session);
        connect(session->process.get(), &SSHFSProcess::ended, this,
                [this, domain](qint32 exitCode) { processEnded(domain, exitCode); });
        qCInfo(lcSSHFSMounter, "mount: success %s at %s", qUtf8Printable(domain),
               qUtf8Printable(session->mountPoint));
    }
    attempt->close();
    if (failure)
        std::rethrow_exception(failure);
    co_return *session;
}

QCoro::Task<bool> SSHFSMounter::unmount(QString domain) {
    return end(domain, usualPatience);
}

QCoro::Task<bool> SSHFSMounter::end(QString domain, Patience patience) {
    if (const std::shared_ptr<MountAttempt> attempt = m_attempts.value(domain)) {
        attempt->giveUp(patience);
        QFuture<void> over = attempt->over();
        co_await over;
        co_return false;
    }
    if (m_endings.contains(domain)) {
        QFuture<void> ending = m_endings.value(domain);
        co_await ending; // whoever began it tells how it ended
        co_return false;
    }
    if (!m_sessions.contains(domain)) {
        qCInfo(lcSSHFSMounter, "unmount: no session for %s", qUtf8Printable(domain));
        co_return false;
    }
    const MountSession session = m_sessions.value(domain);
    co_return co_await takeDown(session, patience);
}

QCoro::Task<bool> SSHFSMounter::takeDown(MountSession session, Patience patience) {
    qCInfo(lcSSHFSMounter, "unmount: %s", qUtf8Printable(session.domain));
    const Ending ending(this, session.domain);
    const QPointer<SSHFSMounter> guard(this);
    const HostSystem host = m_host;
    Shell& shell = m_shell;
    disconnect(session.process.get(), &SSHFSProcess::ended, this, nullptr); // what ends now ends on purpose
    const UnmountOutcome outcome =
        co_await unmountByCommands(host, shell, session.mountPoint, patience.command);
    bool spared = false;
    if (outcome.inUse && patience.sparesOpenFiles) {
        const QFuture<void> processEnd = session.process->end();
        const bool ended = co_await Async::finishesWithin(processEnd, patience.grace);
        spared = !ended && session.process->isRunning() && guard && m_closing == 0;
    }
    if (spared)
        spare(session.process); // ending it now would cut off what is being written
    else
        co_await clearLeftovers(host, shell, session.process, session.mountPoint, patience);
    if (guard)
        m_sessions.remove(session.domain);
    if (outcome.complaint)
        throw MounterError(MounterError::Case::unmountFailed, *outcome.complaint);
    co_return spared;
}

void SSHFSMounter::spare(const std::shared_ptr<SSHFSProcess>& process) {
    m_spared.append(process);
    const std::weak_ptr<SSHFSProcess> spared = process;
    connect(
        process.get(), &SSHFSProcess::ended, this, [this, spared] { m_spared.removeOne(spared.lock()); },
        Qt::QueuedConnection);
}

QStringList SSHFSMounter::leftBehind() const {
    QStringList domains = MountTable::mountedBelow(m_host.mountRoot());
    domains.removeIf([this](const QString& domain) {
        return m_attempts.contains(domain) || m_sessions.contains(domain) || m_endings.contains(domain);
    });
    return domains;
}

QCoro::Task<bool> SSHFSMounter::clearLeftBehind(QString domain) {
    HostSystem gentle = m_host;
    gentle.unmountCommands.removeOne(m_host.forcedUnmount);
    Shell& shell = m_shell;
    const Ending ending(this, domain); // who connects meanwhile waits
    const QString mountPoint = m_host.mountRoot() + QLatin1Char('/') + domain;
    const UnmountOutcome outcome =
        co_await unmountByCommands(gentle, shell, mountPoint, usualPatience.command);
    co_return !outcome.complaint;
}

QCoro::Task<> SSHFSMounter::unmountAll() {
    const QPointer<SSHFSMounter> guard(this);
    ++m_closing;
    const QStringList domains = m_attempts.keys() + m_sessions.keys();
    for (const QString& domain : domains)
        endQuietly(domain, hastyPatience);
    QList<QFuture<void>> ends = m_endings.values();
    for (const auto& process : std::as_const(m_spared)) {
        process->hangUp();
        ends.append(process->end());
    }
    for (const auto& attempt : std::as_const(m_attempts))
        ends.append(attempt->over());
    const bool inTime = co_await allFinishWithin(ends, lastResort);
    if (!inTime && guard) {
        killAll();
        co_await allFinishWithin(ends, afterKill);
    }
    if (guard)
        --m_closing;
}

QCoro::Task<> SSHFSMounter::endQuietly(QString domain, Patience patience) {
    try {
        co_await end(domain, patience);
    } catch (const MounterError&) {
        // Nobody is left to be told.
    }
}

void SSHFSMounter::killAll() {
    for (const auto& attempt : std::as_const(m_attempts))
        attempt->kill();
    for (const MountSession& session : std::as_const(m_sessions))
        session.process->kill();
    for (const auto& process : std::as_const(m_spared))
        process->kill();
}

void SSHFSMounter::processEnded(const QString& domain, qint32 exitCode) {
    qCInfo(lcSSHFSMounter, "sshfs for %s exited unexpectedly status=%d", qUtf8Printable(domain), exitCode);
    clearInBackground(m_sessions.take(domain));
    if (onUnexpectedTermination)
        onUnexpectedTermination(domain, exitCode);
}

QCoro::Task<> SSHFSMounter::clearInBackground(MountSession session) {
    if (!MountTable::lists(session.mountPoint))
        co_return;
    const Ending ending(this, session.domain);
    co_await forceUnmount(m_host, m_shell, session.mountPoint, usualPatience.command);
}
