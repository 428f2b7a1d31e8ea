#include "State/ConnectionCare.h"

#include "Mounting/SSHFSMounter.h"
#include "Mounting/ServerState.h"
#include "State/ActivityReport.h"
#include "State/Connections.h"
#include "System/Preferences.h"

#include <QCoroSignal>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>

#include <algorithm>

namespace {
const QString reconnectKey = QStringLiteral("ReconnectAtStart");
const QString projectsKey = QStringLiteral("ConnectedProjects");
constexpr std::chrono::seconds silence{2};
constexpr std::chrono::milliseconds firstPause{500};
constexpr std::chrono::milliseconds longestPause{30'000};
constexpr int mostAttempts = 12; // about four minutes

QByteArray encoded(const QList<Project>& projects) {
    QJsonArray array;
    for (const Project& project : projects)
        array.append(
            QJsonObject{{QStringLiteral("domain"), project.domain},
                        {QStringLiteral("name"), project.name ? QJsonValue(*project.name) : QJsonValue()},
                        {QStringLiteral("webspaceID"), project.webspaceID},
                        {QStringLiteral("path"), project.path},
                        {QStringLiteral("ssh"), project.type == ProjectType::ssh}});
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QList<Project> decoded(const QByteArray& json) {
    QList<Project> projects;
    for (const QJsonValue value : QJsonDocument::fromJson(json).array()) {
        Project project;
        project.domain = value[QStringLiteral("domain")].toString();
        if (const QJsonValue name = value[QStringLiteral("name")]; name.isString())
            project.name = name.toString();
        project.webspaceID = value[QStringLiteral("webspaceID")].toString();
        project.path = value[QStringLiteral("path")].toString();
        project.type = value[QStringLiteral("ssh")].toBool() ? ProjectType::ssh : ProjectType::harvellon;
        if (!project.domain.isEmpty() && !project.webspaceID.isEmpty() &&
            project.path.startsWith(QLatin1Char('/')))
            projects.append(project);
    }
    return projects;
}
} // namespace

ConnectionCare::ConnectionCare(Connections& connections, SSHFSMounter& mounter, Preferences& preferences,
                               ActivityReport& report)
    : m_connections(connections), m_mounter(mounter), m_preferences(preferences), m_report(report),
      m_reconnectsAtStart(preferences.boolean(reconnectKey).value_or(false)) {
    connect(&m_connections, &Connections::connectionChanged, this, &ConnectionCare::remember);
}

QCoro::Task<> ConnectionCare::startUp() {
    const QPointer<ConnectionCare> guard(this);
    const QList<Project> former = decoded(m_preferences.data(projectsKey).value_or(QByteArray()));
    co_await m_connections.clearLeftBehind();
    if (!guard || !m_reconnectsAtStart)
        co_return;
    for (const Project& project : former)
        bringBack(project);
}

void ConnectionCare::setReconnectsAtStart(bool reconnects) {
    if (reconnects == m_reconnectsAtStart)
        return;
    m_reconnectsAtStart = reconnects;
    m_report.remember(reconnectKey, reconnects);
    remember();
}

void ConnectionCare::remember() {
    if (m_ended)
        return;
    QHash<QString, Project> wanted = m_comingBack;
    for (const Project& project : m_connections.keptProjects() + m_detached)
        wanted.insert(project.domain, project);
    const QByteArray projects = m_reconnectsAtStart ? encoded(wanted.values()) : QByteArray();
    if (projects != m_preferences.data(projectsKey).value_or(QByteArray()))
        m_report.remember(projectsKey, projects);
}

QCoro::Task<> ConnectionCare::prepareForSleep() {
    const QPointer<ConnectionCare> guard(this);
    const QList<Project> detached = co_await m_mounter.detachIdle();
    if (!guard)
        co_return;
    m_detached += detached;
    m_connections.publishSessions();
    for (const Project& project : detached)
        m_report.log(QStringLiteral("%1 vor dem Ruhezustand getrennt.").arg(project.domain),
                     ActivityLogLevel::info);
}

void ConnectionCare::wakeUp() {
    for (const Project& project : std::exchange(m_detached, {}))
        bringBack(project);
    networkChanged();
}

QCoro::Task<> ConnectionCare::networkChanged() {
    Q_EMIT tryAgain();
    m_askAgain = true;
    if (m_asking)
        co_return;
    m_asking = true;
    const QPointer<ConnectionCare> guard(this);
    while (guard && std::exchange(m_askAgain, false)) {
        const QList<MountSession> mounts = m_mounter.sessions().values();
        const QStringList renewed = co_await renewSilentConnections(mounts, silence);
        if (!guard)
            co_return;
        for (const QString& domain : renewed)
            m_report.log(
                QStringLiteral("Die Verbindung zu %1 stand still und wurde neu aufgebaut. Dateien, die "
                               "geöffnet waren, melden einen Fehler.")
                    .arg(domain),
                ActivityLogLevel::warning);
    }
    m_asking = false;
}

QCoro::Task<> ConnectionCare::bringBack(Project project) {
    const QString domain = project.domain;
    if (m_comingBack.contains(domain))
        co_return;
    m_comingBack.insert(domain, project);
    const QPointer<ConnectionCare> guard(this);
    auto outcome = Connections::Reconnected::notYet;
    std::chrono::milliseconds pause = firstPause;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        outcome = co_await m_connections.reconnect(project);
        if (!guard || m_ended)
            co_return;
        if (outcome != Connections::Reconnected::notYet)
            break;
        m_connections.markLost(project); // until it is back; a click on the row tries at once
        co_await qCoro(this, &ConnectionCare::tryAgain, pause);
        if (!guard || m_ended)
            co_return;
        pause = std::min(2 * pause, longestPause);
    }
    m_comingBack.remove(domain);
    if (outcome == Connections::Reconnected::yes)
        co_return;
    m_report.log(QStringLiteral("%1 konnte nicht wieder verbunden werden.").arg(domain),
                 ActivityLogLevel::error);
    m_connections.markLost(project);
}
