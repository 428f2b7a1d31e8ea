#include "State/ConnectionCare.h"

#include "Directory/StoredProjects.h"
#include "Mounting/Ending/ServerState.h"
#include "Mounting/SSHFSMounter.h"
#include "State/ActivityReport.h"
#include "State/Connections.h"
#include "State/GuidanceQuestion.h"
#include "System/Async.h"
#include "System/Preferences.h"

#include <QPointer>

#include <algorithm>

namespace {
const QString reconnectKey = QStringLiteral("ReconnectAtStart");
const QString projectsKey = QStringLiteral("ConnectedProjects");
constexpr SilenceLimits silence{std::chrono::seconds(2), std::chrono::seconds(20)};
constexpr std::chrono::milliseconds firstPause{500};
constexpr std::chrono::milliseconds longestPause{30'000};
constexpr int mostPauses = 12; // about four minutes
} // namespace

ConnectionCare::ConnectionCare(Connections& connections, SSHFSMounter& mounter, Preferences& preferences,
                               ActivityReport& report, GuidanceQuestion& question)
    : m_connections(connections), m_mounter(mounter), m_preferences(preferences), m_report(report),
      m_question(question), m_reconnectsAtStart(preferences.boolean(reconnectKey).value_or(false)) {
    connect(&m_connections, &Connections::connectionChanged, this, &ConnectionCare::connectionChanged);
    connect(&m_connections, &Connections::givenUp, this, [this](const QString& domain) {
        m_givenUp.insert(domain);
        forget(domain);
    });
}

void ConnectionCare::connectionChanged(const QString& domain, bool connected) {
    if (connected) // by the user
        forget(domain);
    else if (!m_connections.isLost(domain)) // the user does not want it any more
        m_comingBack.remove(domain);
    remember();
}

void ConnectionCare::forget(const QString& domain) {
    m_comingBack.remove(domain);
    m_detached.removeIf([&domain](const Project& project) { return project.domain == domain; });
}

QCoro::Task<> ConnectionCare::startUp() {
    const QPointer<ConnectionCare> guard(this);
    const QList<Project> former = projectsStoredIn(m_preferences.data(projectsKey).value_or(QByteArray()));
    if (m_reconnectsAtStart) {
        for (const Project& project : former) // from now on they are remembered
            m_comingBack.insert(project.domain, project);
    }
    co_await m_connections.clearLeftBehind();
    if (!guard)
        co_return;
    const QHash<QString, Project> comingBack = m_comingBack;
    for (const Project& project : comingBack)
        keepTrying(project);
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
    const QByteArray projects = m_reconnectsAtStart ? storedProjects(wanted.values()) : QByteArray();
    if (projects != m_preferences.data(projectsKey).value_or(QByteArray()))
        m_report.remember(projectsKey, projects);
}

QCoro::Task<> ConnectionCare::prepareForSleep() {
    const QPointer<ConnectionCare> guard(this);
    m_asleep = true;
    m_givenUp.clear();
    QList<Project> detached = co_await m_mounter.detachIdle();
    if (!guard)
        co_return;
    detached.removeIf([this](const Project& project) { return m_givenUp.contains(project.domain); });
    m_detached += detached;
    m_connections.publishSessions();
    for (const Project& project : detached)
        m_report.log(QStringLiteral("%1 vor dem Ruhezustand getrennt.").arg(project.domain),
                     ActivityLogLevel::info);
    if (!m_asleep) // the system did not wait, and has woken up already
        bringBack(std::exchange(m_detached, {}));
}

void ConnectionCare::wakeUp() {
    m_asleep = false;
    bringBack(std::exchange(m_detached, {}));
    networkChanged();
}

void ConnectionCare::networkChanged() {
    Q_EMIT tryAgain();
    const QStringList domains = m_mounter.sessions().keys();
    for (const QString& domain : domains) {
        if (m_asking.contains(domain))
            m_asking.insert(domain, true);
        else
            renewIfSilent(domain);
    }
}

QCoro::Task<> ConnectionCare::renewIfSilent(QString domain) {
    const QPointer<ConnectionCare> guard(this);
    do {
        m_asking.insert(domain, false);
        const MountSession session = m_mounter.sessions().value(domain);
        if (!session.process)
            break;
        const bool renewed = co_await renewSilentConnection(session, silence);
        if (!guard)
            co_return;
        if (renewed)
            m_report.log(
                QStringLiteral("Die Verbindung zu %1 stand still und wurde neu aufgebaut. Dateien, die "
                               "geöffnet waren, melden einen Fehler.")
                    .arg(domain),
                ActivityLogLevel::warning);
    } while (m_asking.value(domain));
    m_asking.remove(domain);
}

void ConnectionCare::bringBack(const QList<Project>& projects) {
    for (const Project& project : projects) {
        if (m_comingBack.contains(project.domain) || m_mounter.mountPoint(project.domain))
            continue; // being tried already, or there again
        m_comingBack.insert(project.domain, project);
        keepTrying(project);
    }
}

QCoro::Task<> ConnectionCare::keepTrying(Project project) {
    const QString domain = project.domain;
    const QPointer<ConnectionCare> guard(this);
    std::chrono::milliseconds pause = firstPause;
    for (int pauses = 0; pauses < mostPauses;) {
        const auto outcome = co_await m_connections.reconnect(project);
        if (!guard || m_ended || !m_comingBack.contains(domain))
            co_return;
        if (outcome == Connections::Reconnected::yes) {
            m_comingBack.remove(domain);
            co_return;
        }
        if (outcome == Connections::Reconnected::refused)
            break;
        m_connections.markLost(project); // until it is back; a click on the row tries at once
        const bool woken = co_await Async::emission(this, &ConnectionCare::tryAgain, pause);
        if (!guard || m_ended || !m_comingBack.contains(domain))
            co_return;
        if (woken)
            continue;
        ++pauses;
        pause = std::min(2 * pause, longestPause);
    }
    m_comingBack.remove(domain);
    m_report.log(QStringLiteral("%1 konnte nicht wieder verbunden werden.").arg(domain),
                 ActivityLogLevel::error);
    m_connections.markLost(project);
}

QCoro::Task<QStringList> ConnectionCare::writtenDomains() {
    return ::writtenDomains(m_mounter.sessions().values(), m_mounter.keptUntilClosed());
}

QCoro::Task<> ConnectionCare::askToQuit(std::function<void()> quit) {
    const QPointer<ConnectionCare> guard(this);
    const int question = ++m_quitQuestions;
    const QStringList written = co_await writtenDomains();
    if (!guard || question != m_quitQuestions)
        co_return; // asked again meanwhile
    if (written.isEmpty()) {
        quit();
        co_return;
    }
    m_question.answer(-1); // this question is the urgent one
    const std::function<void()> wait = [this, quit] { quitWhenWritten(quit); };
    m_question.show(quitGuidance(written, wait, quit));
}

QCoro::Task<> ConnectionCare::quitWhenWritten(std::function<void()> quit) {
    constexpr std::chrono::seconds betweenLooks{1};
    const QPointer<ConnectionCare> guard(this);
    const int question = ++m_quitQuestions;
    for (;;) {
        const QStringList written = co_await writtenDomains();
        if (!guard || question != m_quitQuestions)
            co_return;
        if (written.isEmpty())
            break;
        co_await Async::sleep(betweenLooks);
        if (!guard)
            co_return;
    }
    quit();
}
