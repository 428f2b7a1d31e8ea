#include "State/Connections.h"

#include "Actions/OpenFolder.h"
#include "Mounting/SSHFSMounter.h"
#include "Mounting/Setup/SSHFSGuidance.h"
#include "Mounting/Setup/SSHFSReadiness.h"
#include "State/GuidanceQuestion.h"
#include "System/Preferences.h"
#include "System/Ssh/SharedConnections.h"

#include <QPointer>

#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {
const QString followLinksKey = QStringLiteral("FollowSymlinks"); // the domains, a line each
constexpr std::chrono::seconds endsTogether{1};
} // namespace

Connections::Connections(const ActionContext& context, SSHFSMounter& mounter, Preferences& preferences,
                         ShowGuidance showGuidance)
    : m_context(context), m_report(context.report), m_mounter(mounter), m_preferences(preferences),
      m_showGuidance(std::move(showGuidance)) {
    m_mounter.onUnexpectedTermination = [this](const QString& domain, qint32 exitCode) {
        endedByItself(domain, exitCode);
    };
    m_mounter.onKeptMountLost = [this](const QString& domain, qint32 exitCode) {
        m_report.warn(
            QStringLiteral("Der getrennte Mount von %1 ist unerwartet beendet (Exit %2). Was dort noch "
                           "geschrieben wurde, ist nicht vollständig angekommen.")
                .arg(domain)
                .arg(exitCode));
    };
    m_tellEnded.setSingleShot(true);
    m_tellEnded.setInterval(endsTogether);
    m_tellEnded.callOnTimeout(this, [this] { Q_EMIT mountsEnded(std::exchange(m_untold, {})); });
}

std::optional<QDateTime> Connections::connectingSince(const QString& domain) const {
    const auto since = m_connecting.constFind(domain);
    return since == m_connecting.constEnd() ? std::nullopt : std::optional(*since);
}

QCoro::Task<> Connections::connect(Project project) {
    const QString root = co_await mountFor(project);
    if (root.isEmpty())
        co_return;
    const std::optional<QString> target = co_await documentTarget(m_context, project, root, 4s);
    if (!target)
        co_return;
    const QString domain = project.domain;
    Q_EMIT handedOver(domain);
    const QString folder = *target;
    co_await openEditor(m_context, domain, folder);
}

QCoro::Task<> Connections::connectOnly(Project project) {
    const QString root = co_await mountFor(project);
    if (!root.isEmpty())
        Q_EMIT handedOver(project.domain);
}

/// Yields where the project has been mounted; empty where it has not.
QCoro::Task<QString> Connections::mountFor(Project project) {
    const QString domain = project.domain;
    if (m_connecting.contains(domain) || m_mounter.mountPoint(domain))
        co_return {};
    m_connecting.insert(domain, QDateTime::currentDateTime());
    Q_EMIT connectingChanged(domain);
    const OperationTexts texts{.begin =
                                   QStringLiteral("Verbinde mit %1 als %2...").arg(domain, project.sshUser()),
                               .failure = QStringLiteral("Mount fuer %1 fehlgeschlagen: ").arg(domain),
                               .publishesFailure = true};
    const std::function<QCoro::Task<Ending>()> work = [this, project] { return mount(project); };
    const bool mounted = co_await m_report.run(texts, work);
    m_connecting.remove(domain);
    Q_EMIT connectingChanged(domain);
    if (!mounted)
        co_return {};
    setLost(project, false);
    publishSessions();
    const MountSession session = m_mounter.sessions().value(domain);
    if (session.mountPoint.isEmpty())
        co_return {}; // it has ended already
    if (session.coversFiles)
        m_report.warn(QStringLiteral("Im Ordner %1 liegen lokale Dateien, die der Mount verdeckt. Sie sind "
                                     "nicht auf dem Server; nach dem Trennen sind sie wieder zu sehen.")
                          .arg(session.mountPoint));
    co_return session.mountPoint;
}

QCoro::Task<Connections::Reconnected> Connections::reconnect(Project project) {
    const QString domain = project.domain;
    if (m_mounter.mountPoint(domain))
        co_return Reconnected::yes;
    if (m_mounter.isOccupied(domain))
        co_return Reconnected::refused; // somebody works in it; a click on the row replaces it
    if (m_connecting.contains(domain))
        co_return Reconnected::notYet;
    m_connecting.insert(domain, QDateTime::currentDateTime());
    Q_EMIT connectingChanged(domain);
    Reconnected outcome = Reconnected::yes;
    try {
        const MountSession session = co_await m_mounter.mount(project, linksOf(domain));
        m_report.log(QStringLiteral("Wieder verbunden: ") + session.mountPoint, ActivityLogLevel::success);
    } catch (const MounterError& error) {
        const bool mayHelp = error.error() == MounterError::Case::mountFailed ||
                             error.error() == MounterError::Case::mountTimeout;
        outcome = mayHelp ? Reconnected::notYet : Reconnected::refused;
    } catch (const SystemError&) {
        outcome = Reconnected::notYet;
    }
    m_connecting.remove(domain);
    Q_EMIT connectingChanged(domain);
    if (outcome == Reconnected::yes)
        setLost(project, false);
    publishSessions();
    if (outcome == Reconnected::yes)
        Q_EMIT handedOver(domain);
    co_return outcome;
}

QCoro::Task<Ending> Connections::mount(Project project) {
    const SSHFSReadiness readiness = co_await diagnoseSSHFS(m_context.host, m_context.shell);
    switch (readiness.state) {
    case SSHFSReadiness::State::notInstalled:
        m_showGuidance(setupGuidance(m_context.host));
        throw EndedEarly(
            QStringLiteral("sshfs nicht installiert. FUSE-T und sshfs müssen einmalig eingerichtet werden."),
            QStringLiteral("sshfs ist nicht installiert."));
    case SSHFSReadiness::State::notStarting:
        m_showGuidance(repairGuidance(m_context.host));
        throw EndedEarly(QStringLiteral("sshfs ist installiert, startet aber nicht: ") + readiness.detail,
                         QStringLiteral("sshfs-Installation defekt."));
    case SSHFSReadiness::State::ready:
        break;
    }
    try {
        const MountSession session = co_await m_mounter.mount(project, linksOf(project.domain));
        co_return Ending{QStringLiteral("Gemountet: ") + session.mountPoint, ActivityLogLevel::success};
    } catch (const MounterError& error) {
        if (error.concernsAccess())
            Q_EMIT refused(project, error.description());
        throw;
    }
}

QCoro::Task<> Connections::disconnect(QString domain, bool force) {
    const OperationTexts texts{
        .begin = QStringLiteral("%1 %2...")
                     .arg(force ? QStringLiteral("Erzwinge Trennung") : QStringLiteral("Trenne"), domain),
        .failure = QStringLiteral("Trennen von %1 fehlgeschlagen: ").arg(domain),
        .publishesFailure = true};
    UnmountResult result = UnmountResult::ended;
    const std::function<QCoro::Task<Ending>()> work = [this, domain, &result] {
        return unmount(domain, result);
    };
    const bool unmounted = co_await m_report.run(texts, work);
    if (!unmounted)
        co_return;
    Q_EMIT givenUp(domain);
    if (isLost(domain))
        setLost(m_lost.value(domain), false);
    publishSessions();
    warnAbout(result, domain);
}

QCoro::Task<Ending> Connections::unmount(QString domain, UnmountResult& result) {
    result = co_await m_mounter.unmount(domain);
    co_return Ending{QStringLiteral("Unmounted %1.").arg(domain), ActivityLogLevel::success};
}

void Connections::warnAbout(UnmountResult result, const QString& domain) {
    switch (result) {
    case UnmountResult::ended:
        break;
    case UnmountResult::filesOpen:
        m_report.warn(QStringLiteral("Auf %1 sind noch Dateien geöffnet. Sie bleiben benutzbar, bis sie "
                                     "geschlossen werden oder das Programm endet.")
                          .arg(domain));
        break;
    case UnmountResult::writing:
        m_report.warn(
            QStringLiteral("Auf %1 wird noch geschrieben. Das geht im Hintergrund weiter, bis alles auf "
                           "dem Server ist oder das Programm endet.")
                .arg(domain));
        break;
    case UnmountResult::stalled:
        m_report.warn(
            QStringLiteral(
                "Der Server von %1 antwortet nicht. Was gerade geschrieben wird, kommt nur an, wenn er "
                "sich bald wieder meldet.")
                .arg(domain));
        break;
    case UnmountResult::cutOff:
        m_report.warn(
            QStringLiteral("Auf %1 wurde noch geschrieben. Das ist dort nicht vollständig angekommen.")
                .arg(domain));
        break;
    }
}

QCoro::Task<> Connections::clearLeftBehind() {
    std::vector<QCoro::Task<>> clearing;
    for (const QString& domain : m_mounter.leftBehind())
        clearing.push_back(clearLeftBehind(domain));
    for (QCoro::Task<>& each : clearing)
        co_await each;
}

QCoro::Task<> Connections::clearLeftBehind(QString domain) {
    const QPointer<Connections> guard(this);
    const bool cleared = co_await m_mounter.clearLeftBehind(domain);
    if (!guard)
        co_return;
    if (cleared)
        m_report.log(QStringLiteral("Übrig gebliebenen Mount von %1 getrennt.").arg(domain),
                     ActivityLogLevel::info);
    else
        m_report.log(QStringLiteral(
                         "Ein Mount von %1 ist übrig geblieben und wird noch benutzt. Verbinden ersetzt ihn.")
                         .arg(domain),
                     ActivityLogLevel::warning);
}

QCoro::Task<> Connections::disconnectAll() {
    co_await m_mounter.unmountAll();
    publishSessions();
}

void Connections::endedByItself(const QString& domain, qint32 exitCode) {
    m_report.log(QStringLiteral("Mount %1 unerwartet beendet (Exit %2).").arg(domain).arg(exitCode),
                 ActivityLogLevel::error);
    if (const auto mounted = m_mounted.constFind(domain); mounted != m_mounted.constEnd())
        setLost(*mounted, true);
    publishSessions();
    m_untold.append(domain);
    m_tellEnded.start();
}

void Connections::markLost(const Project& project) {
    setLost(project, true);
}

void Connections::setLost(const Project& project, bool lost) {
    if (lost)
        m_lost.insert(project.domain, project);
    else if (m_lost.remove(project.domain) == 0)
        return;
    Q_EMIT connectionChanged(project.domain, m_connectedDomains.contains(project.domain));
}

QList<Project> Connections::keptProjects() const {
    QHash<QString, Project> kept = m_lost;
    kept.insert(m_mounted);
    return kept.values();
}

Links Connections::linksOf(const QString& domain) const {
    const QStringList domains =
        m_preferences.text(followLinksKey).value_or(QString()).split(QLatin1Char('\n'));
    return domains.contains(domain) ? Links::server : Links::local;
}

QCoro::Task<> Connections::offerLinks(Project project) {
    const bool possible = co_await canFollowLinks(m_context.host, m_context.shell);
    if (possible && linksOf(project.domain) == Links::local)
        m_showGuidance(linkGuidance(project, [this, project] { followLinks(project); }));
}

void Connections::followLinks(const Project& project) {
    const QString domains = m_preferences.text(followLinksKey).value_or(QString());
    if (!m_preferences.set(followLinksKey, domains + project.domain + QLatin1Char('\n')))
        m_report.warn(QStringLiteral("Die Einstellungen konnten nicht gespeichert werden: %1")
                          .arg(m_preferences.file()));
    followLinksAnew(project);
}

QCoro::Task<> Connections::followLinksAnew(Project project) {
    co_await disconnect(project.domain, false);
    co_await connect(project);
}

void Connections::publishSessions() {
    const QHash<QString, Project> mountedBefore = std::exchange(m_mounted, {});
    for (const MountSession& session : m_mounter.sessions())
        m_mounted.insert(session.domain, session.project);
    const QSet<QString> before = std::exchange(m_connectedDomains, m_mounter.connectedDomains());
    for (const QString& domain : before - m_connectedDomains) {
        m_context.shared.release(mountedBefore.value(domain).sshLogin());
        Q_EMIT connectionChanged(domain, false);
    }
    for (const QString& domain : m_connectedDomains - before) {
        m_context.shared.open(m_mounted.value(domain).sshLogin());
        Q_EMIT connectionChanged(domain, true);
    }
}
