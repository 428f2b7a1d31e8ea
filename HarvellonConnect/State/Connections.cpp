#include "State/Connections.h"

#include "Actions/OpenFolder.h"
#include "Mounting/SSHFSMounter.h"
#include "Mounting/Setup/SSHFSGuidance.h"
#include "Mounting/Setup/SSHFSReadiness.h"

#include <QPointer>

#include <utility>
#include <vector>

using namespace std::chrono_literals;

Connections::Connections(const HostSystem& host, Shell& shell, Reporter& report, SSHFSMounter& mounter,
                         VSCodeLauncher& editor, ShowGuidance showGuidance)
    : m_host(host), m_shell(shell), m_report(report), m_mounter(mounter), m_editor(editor),
      m_showGuidance(std::move(showGuidance)) {
    m_mounter.onUnexpectedTermination = [this](const QString& domain, qint32 exitCode) {
        endedByItself(domain, exitCode);
    };
}

std::optional<QDateTime> Connections::connectingSince(const QString& domain) const {
    const auto since = m_connecting.constFind(domain);
    return since == m_connecting.constEnd() ? std::nullopt : std::optional(*since);
}

QCoro::Task<> Connections::connect(Project project) {
    const QString domain = project.domain;
    if (m_connecting.contains(domain) || m_mounter.mountPoint(domain))
        co_return;
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
        co_return;
    publishSessions();
    const MountSession session = m_mounter.sessions().value(domain);
    if (session.mountPoint.isEmpty())
        co_return; // it has ended already
    if (session.coversFiles)
        m_report.warn(QStringLiteral("Im Ordner %1 liegen lokale Dateien, die der Mount verdeckt. Sie sind "
                                     "nicht auf dem Server; nach dem Trennen sind sie wieder zu sehen.")
                          .arg(session.mountPoint));

    const QString root = session.mountPoint;
    const std::optional<QString> target = co_await documentTarget(m_report, project, root, 4s);
    if (!target)
        co_return;
    const QString folder = *target;
    co_await m_editor.open(domain, folder);
}

QCoro::Task<Ending> Connections::mount(Project project) {
    const SSHFSReadiness readiness = co_await diagnoseSSHFS(m_host, m_shell);
    switch (readiness.state) {
    case SSHFSReadiness::State::notInstalled:
        m_showGuidance(setupGuidance(m_host));
        throw EndedEarly(
            QStringLiteral("sshfs nicht installiert. FUSE-T und sshfs müssen einmalig eingerichtet werden."),
            QStringLiteral("sshfs ist nicht installiert."));
    case SSHFSReadiness::State::notStarting:
        m_showGuidance(repairGuidance(m_host));
        throw EndedEarly(QStringLiteral("sshfs ist installiert, startet aber nicht: ") + readiness.detail,
                         QStringLiteral("sshfs-Installation defekt."));
    case SSHFSReadiness::State::ready:
        break;
    }
    const MountSession session = co_await m_mounter.mount(project);
    co_return Ending{QStringLiteral("Gemountet: ") + session.mountPoint, ActivityLogLevel::success};
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
    case UnmountResult::cutOff:
        m_report.warn(
            QStringLiteral("Der Server von %1 antwortet nicht. Was gerade geschrieben wurde, ist dort "
                           "nicht vollständig angekommen.")
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
    publishSessions();
    Q_EMIT mountEnded(domain);
}

void Connections::publishSessions() {
    const QSet<QString> before = std::exchange(m_connectedDomains, m_mounter.connectedDomains());
    for (const QString& domain : before - m_connectedDomains)
        Q_EMIT connectionChanged(domain, false);
    for (const QString& domain : m_connectedDomains - before)
        Q_EMIT connectionChanged(domain, true);
}
