#include "State/AppState.h"

#include "State/Failures.h"
#include "System/Async.h"

namespace {
constexpr qsizetype shownTokenCharacters = 12;

const QString sessionOver = QStringLiteral("Sitzung abgelaufen. Bitte erneut einloggen.");

/// Enough of a token to tell two apart, too little to use one.
QString shownToken(const std::optional<QString>& token) {
    return token ? token->left(shownTokenCharacters) : QStringLiteral("nil");
}
} // namespace

void AppState::startRefresh() {
    refresh();
}

QCoro::Task<> AppState::refresh() {
    m_preferences.retry();
    setLastError(std::nullopt);
    setLoading(+1);
    setConnectionStatus(ConnectionStatus::Case::checking);
    log(QStringLiteral("Projekte und Verbindungsstatus werden aktualisiert..."), ActivityLogLevel::info);
    co_await load(m_loadGeneration);
    setLoading(-1);
}

QCoro::Task<> AppState::load(int generation) {
    // A keyring that was locked or not yet there when the program started may have opened meanwhile.
    if (m_activeAccountID && (!m_oauth.accessToken() || m_oauth.activeAccountID() != m_activeAccountID)) {
        const QString accountID = *m_activeAccountID;
        co_await m_oauth.loadTokens(accountID);
    }
    const QString token = m_oauth.accessToken().value_or(QString());
    if (token.isEmpty()) {
        publishFailure(QStringLiteral("Bitte einloggen."), false);
        log(QStringLiteral("Nicht eingeloggt. Bitte ueber Einstellungen anmelden."),
            ActivityLogLevel::warning);
        co_return;
    }

    std::exception_ptr failure;
    bool refused = false;
    try {
        const ApplicationsResponse response = co_await m_api.fetchApplications(token);
        co_await publish(response, generation);
        co_return;
    } catch (const ProjectAPIError& error) {
        refused = error.error() == ProjectAPIError::Case::unauthorized;
        failure = std::current_exception();
    } catch (...) {
        failure = std::current_exception();
    }
    if (generation != m_loadGeneration)
        co_return; // another account is shown by now
    if (!refused) {
        const QString reason = descriptionOf(failure);
        publishFailure(reason, true);
        log(QStringLiteral("Projekte konnten nicht geladen werden: ") + reason, ActivityLogLevel::error);
        co_return;
    }

    log(QStringLiteral("API gab 401/403 zurueck. Versuche Token-Erneuerung..."), ActivityLogLevel::warning);
    try {
        co_await m_oauth.renewTokens(token);
        if (generation != m_loadGeneration)
            co_return;
        log(QStringLiteral("Token erneuert (%1...). Wiederhole API-Aufruf.")
                .arg(shownToken(m_oauth.accessToken())),
            ActivityLogLevel::info);
        const QString renewed = m_oauth.accessToken().value_or(QString());
        if (renewed.isEmpty())
            co_return;
        const ApplicationsResponse response = co_await m_api.fetchApplications(renewed);
        co_await publish(response, generation);
        co_return;
    } catch (...) {
        failure = std::current_exception();
    }
    if (generation != m_loadGeneration)
        co_return;
    publishFailure(sessionOver, true);
    log(QStringLiteral("Token-Erneuerung fehlgeschlagen: ") + descriptionOf(failure),
        ActivityLogLevel::error);
}

QCoro::Task<> AppState::publish(ApplicationsResponse response, int generation) {
    const std::function<ProjectList()> work = [projects = response.projects] {
        return ProjectList::of(projects);
    };
    const std::optional<ProjectList> list = co_await Async::onWorker(work);
    if (generation != m_loadGeneration)
        co_return;
    setUserProfile(response.user);
    setProjects(*list);
    setConnectionStatus(ConnectionStatus::Case::success);
    log(QStringLiteral("Verbunden als %1. %2 Projekte geladen.")
            .arg(response.user.name, QString::number(m_projects.size())),
        ActivityLogLevel::success);
}

void AppState::publishFailure(const QString& reason, bool asLastError) {
    if (asLastError)
        setLastError(reason);
    setConnectionStatus(ConnectionStatus::Case::failure, reason);
    setUserProfile(std::nullopt);
    setProjects({});
}
