#include "State/AppState.h"

#include "Mounting/LegacyKey.h"
#include "System/Async.h"

#include <QPointer>
#include <QUrl>

namespace {
const QString globalHotkeyKey = QStringLiteral("GlobalHotkeyEnabled");
constexpr std::chrono::seconds storingLimit{4};
} // namespace

AppState::AppState(AppServices services, DesktopCommands desktop, QObject* parent)
    : QObject(parent), m_host(std::move(services.host)), m_shell(services.shell),
      m_preferences(services.preferences), m_network(services.network), m_desktop(std::move(desktop)),
      m_oauth(services.server, services.network, services.keychain,
              [this](const QUrl& address) { openAddress(address.toString(QUrl::FullyEncoded)); }),
      m_globalHotkeyEnabled(m_preferences.boolean(globalHotkeyKey).value_or(true)),
      m_api(services.server.at(QLatin1StringView("/api/json/applications")), services.network),
      m_loginItem(m_host), m_sshfsMounter(m_host, services.shell), m_editor(m_host, services.shell) {
    QObject::connect(&m_oauth, &OAuthManager::isAuthenticatingChanged, this,
                     &AppState::isAuthenticatingChanged);
    QObject::connect(&m_oauth, &OAuthManager::storingFailed, this, [this] {
        log(QStringLiteral(
                "Die Anmeldung konnte nicht gespeichert werden und gilt nur, bis das Programm endet."),
            ActivityLogLevel::error);
    });
    loadAccountsRegistry();
    removeLegacyKeyPair(m_host.homeFolder);
    if (!services.server.problem.isEmpty())
        log(services.server.problem, ActivityLogLevel::error);
    startUp();
    m_sshfsMounter.onUnexpectedTermination = [this](const QString& domain, qint32 exitCode) {
        mountEnded(domain, exitCode);
    };
    m_hotkeyManager.onPress = [this] { m_desktop.togglePanel(); };
    m_hotkeyManager.onRefused = [this](const QString& reason) {
        m_hotkeyProblem = reason;
        Q_EMIT hotkeyProblemChanged();
        log(reason, ActivityLogLevel::warning);
    };
    applyHotkeySetting();
}

AppState::~AppState() = default;

QCoro::Task<> AppState::startUp() {
    // The icon comes first: loading what speaks TLS takes as long as showing it.
    co_await Async::sleep(std::chrono::milliseconds(50));
    for (const QString& domain : m_sshfsMounter.leftBehind())
        clearLeftBehind(domain);
    co_await dropDuplicates();
    if (m_accounts.isEmpty())
        co_await migrateLegacyLoginIfNeeded();
    co_await refresh();
}

QCoro::Task<> AppState::clearLeftBehind(QString domain) {
    const QPointer<AppState> guard(this);
    const bool cleared = co_await m_sshfsMounter.clearLeftBehind(domain);
    if (!guard)
        co_return;
    if (cleared)
        log(QStringLiteral("Übrig gebliebenen Mount von %1 getrennt.").arg(domain), ActivityLogLevel::info);
    else
        log(QStringLiteral(
                "Ein Mount von %1 ist übrig geblieben und wird noch benutzt. Verbinden ersetzt ihn.")
                .arg(domain),
            ActivityLogLevel::warning);
}

void AppState::log(const QString& message, ActivityLogLevel level) {
    m_activityLog.append(message, level);
}

void AppState::remember(const QString& key, const QVariant& value) {
    if (!m_preferences.set(key, value))
        log(QStringLiteral("Die Einstellungen konnten nicht gespeichert werden: %1")
                .arg(m_preferences.file()),
            ActivityLogLevel::error);
}

void AppState::warn(const QString& message) {
    log(message, ActivityLogLevel::warning);
    setLastError(message);
}

void AppState::setGlobalHotkeyEnabled(bool enabled) {
    if (enabled == m_globalHotkeyEnabled)
        return;
    m_globalHotkeyEnabled = enabled;
    remember(globalHotkeyKey, enabled);
    applyHotkeySetting();
    Q_EMIT globalHotkeyEnabledChanged();
}

void AppState::setStartsAtLogin(bool starts) {
    if (!m_loginItem.setEnabled(starts))
        log(QStringLiteral("Der Start beim Anmelden konnte nicht geändert werden."),
            ActivityLogLevel::warning);
    Q_EMIT startsAtLoginChanged(); // the switch follows the desktop, whatever it took
}

void AppState::applyHotkeySetting() {
    if (!m_hotkeyProblem.isEmpty()) {
        m_hotkeyProblem.clear();
        Q_EMIT hotkeyProblemChanged();
    }
    if (m_globalHotkeyEnabled)
        m_hotkeyManager.registerKey();
    else
        m_hotkeyManager.unregisterKey();
}

void AppState::mountEnded(const QString& domain, qint32 exitCode) {
    log(QStringLiteral("Mount %1 unerwartet beendet (Exit %2).").arg(domain).arg(exitCode),
        ActivityLogLevel::error);
    publishSessions();
    if (m_desktop.tellMountEnded)
        m_desktop.tellMountEnded(domain);
}

QCoro::Task<> AppState::shutDown() {
    QCoro::Task<> storing = m_oauth.finish(storingLimit);
    co_await m_sshfsMounter.unmountAll();
    publishSessions();
    co_await storing;
    m_preferences.retry();
}

std::optional<Project> AppState::project(const QString& domain) const {
    const auto found = std::find_if(m_projects.begin(), m_projects.end(),
                                    [&domain](const Project& project) { return project.domain == domain; });
    return found == m_projects.end() ? std::nullopt : std::optional(*found);
}

void AppState::setSearchText(const QString& text) {
    if (text == m_searchText)
        return;
    m_searchText = text;
    m_visibleProjects.setSearchText(text);
    Q_EMIT searchTextChanged();
}

void AppState::setLoading(int change) {
    const bool before = isLoading();
    m_loads += change;
    if (isLoading() != before)
        Q_EMIT isLoadingChanged();
}

void AppState::setLastError(std::optional<QString> error) {
    if (m_lastError == error)
        return;
    m_lastError = std::move(error);
    Q_EMIT lastErrorChanged();
}

void AppState::setConnectionStatus(ConnectionStatus::Case status, const QString& failure) {
    m_connectionStatus = status;
    m_connectionFailure = failure;
    Q_EMIT connectionStatusChanged();
}

void AppState::setUserProfile(std::optional<UserProfile> profile) {
    m_userProfile = std::move(profile);
    m_visibleProjects.setUser(m_userProfile);
    Q_EMIT userProfileChanged();
}

void AppState::setProjects(const ProjectList& list) {
    m_projects = list.projects;
    m_visibleProjects.setProjects(list);
    Q_EMIT projectsChanged();
}

void AppState::clearActivityLog() {
    m_activityLog.clear();
}

void AppState::dismissLastError() {
    setLastError(std::nullopt);
}
