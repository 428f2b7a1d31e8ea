#include "State/ProjectLoading.h"

#include "Directory/ProjectAPI.h"
#include "SignIn/OAuthManager.h"
#include "System/Async.h"

#include <algorithm>

namespace {
constexpr qsizetype shownTokenCharacters = 12;

const QString sessionOver = QStringLiteral("Sitzung abgelaufen. Bitte erneut einloggen.");

/// Enough of a token to tell two apart, too little to use one.
QString shownToken(const QString& token) {
    return token.isEmpty() ? QStringLiteral("nil") : token.left(shownTokenCharacters);
}
} // namespace

ProjectLoading::ProjectLoading(Reporter& report, OAuthManager& oauth, ProjectAPI& api, ProjectListModel& rows,
                               TakeToken takeToken)
    : m_report(report), m_oauth(oauth), m_api(api), m_rows(rows), m_takeToken(std::move(takeToken)) {}

QCoro::Task<> ProjectLoading::refresh() {
    m_report.setLastError(std::nullopt);
    setLoading(+1);
    setConnectionStatus(ConnectionStatus::Case::checking);
    const OperationTexts texts{.begin =
                                   QStringLiteral("Projekte und Verbindungsstatus werden aktualisiert..."),
                               .failure = QStringLiteral("Projekte konnten nicht geladen werden: "),
                               .publishesFailure = true};
    const std::function<QCoro::Task<Ending>()> work = [this, generation = m_generation] {
        return load(generation);
    };
    co_await m_report.run(texts, work);
    setLoading(-1);
}

QCoro::Task<Ending> ProjectLoading::load(int generation) {
    // A keyring that was locked or absent when the program started may be open by now.
    const QString token = co_await m_takeToken();
    if (generation != m_generation)
        co_return Ending{};
    if (token.isEmpty()) {
        publishFailure(QStringLiteral("Bitte einloggen."));
        co_return Ending{QStringLiteral("Nicht eingeloggt. Bitte ueber Einstellungen anmelden."),
                         ActivityLogLevel::warning};
    }
    try {
        const std::optional<ApplicationsResponse> response = co_await fetchUnlessRefused(token);
        if (response)
            co_return co_await publish(*response, generation);
        if (generation != m_generation)
            co_return Ending{};
        co_return co_await renewAndLoad(token, generation);
    } catch (const Failure& failure) {
        if (generation != m_generation)
            co_return Ending{}; // another account is shown by now
        publishFailure(failure.description());
        throw;
    }
}

QCoro::Task<std::optional<ApplicationsResponse>> ProjectLoading::fetchUnlessRefused(QString token) {
    try {
        co_return co_await m_api.fetchApplications(token);
    } catch (const ProjectAPIError& error) {
        if (error.error() != ProjectAPIError::Case::unauthorized)
            throw;
    }
    co_return std::nullopt;
}

QCoro::Task<Ending> ProjectLoading::renewAndLoad(QString refusedToken, int generation) {
    m_report.log(QStringLiteral("API gab 401/403 zurueck. Versuche Token-Erneuerung..."),
                 ActivityLogLevel::warning);
    try {
        co_await m_takeToken(); // a login may have put its own tokens in use
        co_await m_oauth.renewTokens(refusedToken);
        const QString renewed = co_await m_takeToken();
        if (generation != m_generation)
            co_return Ending{};
        m_report.log(
            QStringLiteral("Token erneuert (%1...). Wiederhole API-Aufruf.").arg(shownToken(renewed)),
            ActivityLogLevel::info);
        if (renewed.isEmpty())
            co_return Ending{};
        const ApplicationsResponse response = co_await m_api.fetchApplications(renewed);
        co_return co_await publish(response, generation);
    } catch (const Failure& failure) {
        throw EndedEarly(QStringLiteral("Token-Erneuerung fehlgeschlagen: ") + failure.description(),
                         sessionOver);
    }
}

QCoro::Task<Ending> ProjectLoading::publish(ApplicationsResponse response, int generation) {
    const std::function<ProjectList()> work = [projects = response.projects] {
        return ProjectList::of(projects);
    };
    const std::optional<ProjectList> list = co_await Async::onWorker(work);
    if (generation != m_generation)
        co_return Ending{};
    setUserProfile(response.user);
    setProjects(*list);
    setConnectionStatus(ConnectionStatus::Case::success);
    co_return Ending{QStringLiteral("Verbunden als %1. %2 Projekte geladen.")
                         .arg(response.user.name, QString::number(projects().size())),
                     ActivityLogLevel::success};
}

void ProjectLoading::publishFailure(const QString& reason) {
    setConnectionStatus(ConnectionStatus::Case::failure, reason);
    setUserProfile(std::nullopt);
    setProjects({});
}

void ProjectLoading::clear() {
    setUserProfile(std::nullopt);
    setProjects({});
    setConnectionStatus(ConnectionStatus::Case::idle);
}

std::optional<Project> ProjectLoading::project(const QString& domain) const {
    const auto found = std::find_if(projects().begin(), projects().end(),
                                    [&domain](const Project& project) { return project.domain == domain; });
    return found == projects().end() ? std::nullopt : std::optional(*found);
}

void ProjectLoading::setLoading(int change) {
    const bool before = isLoading();
    m_loads += change;
    if (isLoading() != before)
        Q_EMIT isLoadingChanged();
}

void ProjectLoading::setConnectionStatus(ConnectionStatus::Case status, const QString& failure) {
    m_connectionStatus = status;
    m_connectionFailure = failure;
    Q_EMIT connectionStatusChanged();
}

void ProjectLoading::setUserProfile(std::optional<UserProfile> profile) {
    const bool offersChange = profile != m_userProfile;
    m_userProfile = std::move(profile);
    if (offersChange)
        m_rows.refreshOffers();
    Q_EMIT userProfileChanged();
}

void ProjectLoading::setProjects(const ProjectList& list) {
    m_rows.setProjects(list);
    Q_EMIT projectsChanged();
}
