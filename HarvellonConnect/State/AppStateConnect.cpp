#include "State/AppState.h"

#include "Actions/DirectoryWait.h"
#include "Mounting/SSHFSReadiness.h"
#include "State/Failures.h"

using namespace std::chrono_literals;

void AppState::startConnect(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        connectProject(*known);
}

QCoro::Task<> AppState::connectProject(Project project) {
    const QString domain = project.domain;
    if (m_connecting.contains(domain) || m_sshfsMounter.mountPoint(domain))
        co_return;
    m_connecting.insert(domain);
    m_visibleProjects.setConnecting(domain, true);
    const std::optional<QString> mountPoint = co_await mountProject(project);
    m_connecting.remove(domain);
    m_visibleProjects.setConnecting(domain, false);
    if (!mountPoint)
        co_return;
    const QString root = *mountPoint;
    const std::optional<QString> target = co_await documentTarget(project, root, 4s);
    if (!target)
        co_return;
    const QString folder = *target;
    co_await m_editor.open(domain, folder);
}

/// The mount point, or nothing after the failure has been told.
QCoro::Task<std::optional<QString>> AppState::mountProject(Project project) {
    setLastError(std::nullopt);
    log(QStringLiteral("Verbinde mit %1 als %2...").arg(project.domain, project.sshUser()),
        ActivityLogLevel::info);
    const SSHFSReadiness readiness = co_await diagnoseSSHFS(m_host, m_shell);
    switch (readiness.state) {
    case SSHFSReadiness::State::notInstalled:
        log(QStringLiteral("sshfs nicht installiert. FUSE-T und sshfs müssen einmalig eingerichtet werden."),
            ActivityLogLevel::error);
        setLastError(QStringLiteral("sshfs ist nicht installiert."));
        showSSHFSSetupAlert();
        co_return std::nullopt;
    case SSHFSReadiness::State::notStarting:
        log(QStringLiteral("sshfs ist installiert, startet aber nicht: ") + readiness.detail,
            ActivityLogLevel::error);
        setLastError(QStringLiteral("sshfs-Installation defekt."));
        showSSHFSRepairAlert();
        co_return std::nullopt;
    case SSHFSReadiness::State::ready:
        break;
    }
    std::exception_ptr failure;
    try {
        const MountSession session = co_await m_sshfsMounter.mount(project);
        log(QStringLiteral("Gemountet: ") + session.mountPoint, ActivityLogLevel::success);
        publishSessions();
        if (session.coversFiles) {
            warn(QStringLiteral(
                     "Im Ordner %1 liegen lokale Dateien, die der Mount verdeckt. Sie sind nicht auf dem "
                     "Server; nach dem Trennen sind sie wieder zu sehen.")
                     .arg(session.mountPoint));
        }
        co_return session.mountPoint;
    } catch (...) {
        failure = std::current_exception();
    }
    const QString reason = descriptionOf(failure);
    setLastError(reason);
    log(QStringLiteral("Mount fuer %1 fehlgeschlagen: %2").arg(project.domain, reason),
        ActivityLogLevel::error);
    co_return std::nullopt;
}

QCoro::Task<std::optional<QString>> AppState::documentTarget(Project project, QString mountPoint,
                                                             std::chrono::seconds budget) {
    const QString subfolder = project.documentFolder();
    const QString folder = mountPoint + QLatin1Char('/') + subfolder;
    if (co_await waitForDirectory(folder, budget))
        co_return folder;
    if (!co_await waitForDirectory(mountPoint, 1s))
        co_return std::nullopt;
    log(QStringLiteral("Unterordner %1 nicht gefunden – oeffne Projektwurzel fuer %2.")
            .arg(subfolder, project.domain),
        ActivityLogLevel::warning);
    co_return mountPoint;
}

void AppState::startDisconnect(const QString& domain) {
    disconnectProject(domain, false);
}

QCoro::Task<> AppState::disconnectProject(QString domain, bool force) {
    setLastError(std::nullopt);
    log(QStringLiteral("%1 %2...")
            .arg(force ? QStringLiteral("Erzwinge Trennung") : QStringLiteral("Trenne"), domain),
        ActivityLogLevel::info);
    std::exception_ptr failure;
    try {
        const bool inUse = co_await m_sshfsMounter.unmount(domain);
        log(QStringLiteral("Unmounted %1.").arg(domain), ActivityLogLevel::success);
        publishSessions();
        if (inUse)
            warn(QStringLiteral(
                     "Auf %1 sind noch Dateien geöffnet. Sie bleiben benutzbar, bis sie geschlossen "
                     "werden oder das Programm endet.")
                     .arg(domain));
        co_return;
    } catch (...) {
        failure = std::current_exception();
    }
    const QString reason = descriptionOf(failure);
    setLastError(reason);
    log(QStringLiteral("Trennen von %1 fehlgeschlagen: %2").arg(domain, reason), ActivityLogLevel::error);
}

void AppState::publishSessions() {
    const QSet<QString> domains = m_sshfsMounter.connectedDomains();
    if (domains == m_connectedDomains)
        return;
    m_connectedDomains = domains;
    m_visibleProjects.setConnectedDomains(domains);
    Q_EMIT connectedDomainsChanged();
}
