#include "State/AppState.h"

#include "Actions/BrowserSearch.h"
#include "Mounting/Keys/LegacyKey.h"
#include "System/Async.h"
#include "System/Managed/ManagedSettings.h"
#include "System/Preferences.h"

#include <QUrl>

namespace {
const QString quietWorkspaceKey = QStringLiteral("QuietWorkspace");
const QString unsavedLogin =
    QStringLiteral("Die Anmeldung konnte nicht gespeichert werden und gilt nur, bis das Programm endet.");
constexpr std::chrono::seconds storingLimit{4};
} // namespace

AppState::AppState(AppServices services, DesktopCommands desktop, QObject* parent)
    : QObject(parent), m_host(std::move(services.host)), m_preferences(services.preferences),
      m_desktop(std::move(desktop)), m_report(services.preferences),
      m_oauth(services.server, services.network, services.keychain,
              [this](const QUrl& address) { m_loginPage.open(address); }),
      m_api(services.server.at(QLatin1StringView("/api/json/applications")), services.network),
      m_loginItem(m_host), m_sshfsMounter(m_host, services.shell), m_editor(m_host, services.shell),
      m_shared(m_host, services.shell),
      m_programs(std::make_unique<ProgramSettings>(
          m_host, services.preferences, m_report,
          [this](const QString& domain) { perform(static_cast<int>(HoverTarget::vscode), domain, false); })),
      m_tunnels(m_host, services.shell),
      m_context{m_host,
                services.shell,
                services.network,
                m_report,
                m_editor,
                m_shared,
                m_programs->choices(),
                m_tunnels,
                [this](const QString& domain) { return m_sshfsMounter.mountPoint(domain); },
                [this](const QString& domain, const std::function<bool()>& question) {
                    return m_sshfsMounter.ask(domain, question);
                },
                [this](const QString& domain) { m_sshfsMounter.warmUp(domain); },
                [this](const Project& project) { m_connections.offerLinks(project); },
                [this](const Project& project) { return m_connections.connect(project); },
                [this](const QString& domain) { return m_connections.disconnect(domain, false); },
                m_desktop.copyText,
                [this](const QString& domain, bool pinned) { m_marks.setPinned(domain, pinned); }},
      m_loginPage(m_context), m_guidance(m_context), m_access(std::make_unique<AccessHelp>(m_context)),
      m_setup(std::make_unique<SetupSteps>(m_context, services.server.address, m_guidance)),
      m_visibleProjects([this](const QString& domain) { return rowState(domain); }),
      m_loading(m_report, m_oauth, m_api, m_visibleProjects, [this] { return prepareLoad(); }),
      m_accounts(m_oauth, m_api, services.preferences, m_report, m_loading),
      m_marks(*m_accounts.model(), m_visibleProjects, services.preferences, m_report),
      m_connections(m_context, m_sshfsMounter, m_preferences,
                    [this](const Guidance& guidance) { m_guidance.show(guidance); }),
      m_care(m_connections, m_sshfsMounter, m_preferences, m_report, m_guidance),
      m_repositories(m_host, services.shell, m_sshfsMounter, m_connections, m_report),
      m_diagnosis(std::make_unique<Diagnosis>(*this, services.shell)), m_actions(m_context),
      m_globalHotkeyEnabled(m_preferences.boolean(SettingKey::hotkey).value_or(true)) {
    m_editor.setQuiet(m_preferences.boolean(quietWorkspaceKey).value_or(false));
    publishParts();
    m_accounts.loadAccountsRegistry();
    removeLegacyKeyPair(m_host.homeFolder);
    if (!services.server.problem.isEmpty())
        m_report.log(services.server.problem, ActivityLogLevel::error);
    startUp();
    wireHotkey();
    applyHotkeySetting();
}

AppState::~AppState() = default;

AppState::Parts AppState::parts() {
    return {m_oauth,        m_sshfsMounter, m_loading, m_accounts, m_connections, m_care,
            m_repositories, m_actions,      m_report,  m_context,  m_marks};
}

void AppState::publishParts() {
    connect(&m_oauth, &OAuthManager::isAuthenticatingChanged, this, [this] {
        m_report.setAccountError(std::nullopt); // a login that has failed reports its error after this
        if (!isAuthenticating())
            m_loginPage.forget();
        Q_EMIT isAuthenticatingChanged();
    });
    connect(&m_oauth, &OAuthManager::storingFailed, this, [this] { m_report.accountFailed(unsavedLogin); });
    connect(&m_oauth, &OAuthManager::allStored, this,
            [this] { m_report.withdrawAccountError(unsavedLogin); });
    connect(&m_report, &ActivityReport::accountErrorChanged, this, &AppState::accountErrorChanged);
    connect(&m_report, &ActivityReport::lastErrorChanged, this, &AppState::lastErrorChanged);
    connect(&m_loading, &ProjectLoading::projectsChanged, this, &AppState::projectsChanged);
    connect(&m_loading, &ProjectLoading::isLoadingChanged, this, &AppState::isLoadingChanged);
    connect(&m_loading, &ProjectLoading::connectionStatusChanged, this, &AppState::connectionStatusChanged);
    connect(&m_loading, &ProjectLoading::userProfileChanged, this, &AppState::userProfileChanged);
    connect(&m_guidance, &GuidanceQuestion::changed, this, &AppState::guidanceChanged);
    connect(&m_connections, &Connections::connectingChanged, &m_visibleProjects,
            &ProjectListModel::refreshRow);
    connect(&m_connections, &Connections::connectionChanged, &m_visibleProjects,
            &ProjectListModel::refreshRow);
    connect(&m_connections, &Connections::connectionChanged, this, &AppState::showKeptProjects);
    connect(&m_loading, &ProjectLoading::projectsChanged, this, &AppState::showKeptProjects);
    connect(&m_loading, &ProjectLoading::userProfileChanged, this, &AppState::showKeptProjects);
    connect(&m_connections, &Connections::refused, m_access.get(), &AccessHelp::offer);
    connect(&m_report, &ActivityReport::lastErrorChanged, m_access.get(),
            [this] { m_access->setLastError(m_report.lastError()); });
    connect(&m_connections, &Connections::mountsEnded, this,
            [this](const QStringList& domains) { m_desktop.tellMountsEnded(domains); });
    connect(&m_repositories, &MountedRepositories::changed, this, &AppState::gitChanged);
    connect(&m_networkMonitor, &NetworkMonitor::changed, this, &AppState::networkChanged);
    connect(&m_sleepMonitor, &SleepMonitor::aboutToSleep, this, &AppState::detachForSleep);
    connect(&m_sleepMonitor, &SleepMonitor::wokeUp, &m_care, &ConnectionCare::wakeUp);
}

void AppState::wireHotkey() {
    m_hotkeyManager.onPress = [this] { m_desktop.togglePanel(); };
    m_hotkeyManager.onRefused = [this](const QString& reason) {
        m_hotkeyProblem = reason;
        Q_EMIT hotkeyProblemChanged();
        m_report.log(reason, ActivityLogLevel::warning);
    };
}

RowState AppState::rowState(const QString& domain) const {
    const bool connected = connectedDomains().contains(domain);
    RowFacts facts = RowFacts::of(userProfile(), connected);
    facts.kept = m_visibleProjects.isKept(domain);
    facts.lost = m_connections.isLost(domain);
    facts.pinnable = m_marks.canChange();
    facts.pinned = m_marks.isPinned(domain);
    return {connected, m_connections.connectingSince(domain), ProjectActions::offers(facts), facts.lost};
}

void AppState::showKeptProjects() {
    const bool coder = RowFacts::of(userProfile(), false).coder;
    QList<Project> kept = m_connections.keptProjects();
    // A list whose user may not disconnect does not keep a mount in reach either.
    kept.removeIf([&](const Project& project) { return coder && m_loading.project(project.domain); });
    m_visibleProjects.setKept(kept);
}

void AppState::networkChanged() {
    constexpr std::chrono::minutes betweenLoads{1};
    // Without any network a connection may still survive until it is back; nothing could replace it now.
    if (!NetworkMonitor::hasNetwork())
        return;
    m_care.networkChanged();
    if (connectionStatus() != ConnectionStatus::Case::failure || !m_oauth.accessToken() ||
        !m_nextLoad.hasExpired())
        return;
    m_nextLoad.setRemainingTime(betweenLoads);
    m_loading.refresh();
}

QCoro::Task<> AppState::detachForSleep() {
    co_await m_care.prepareForSleep();
    m_sleepMonitor.allowSleep();
}

QCoro::Task<> AppState::startUp() {
    // The icon comes first: loading what speaks TLS takes as long as showing it.
    co_await Async::sleep(std::chrono::milliseconds(50));
    m_care.startUp(); // beside the first load
    if (m_management->fixesLoginItem() && startsAtLogin() != m_management->startsAtLogin())
        setStartsAtLogin(*m_management->startsAtLogin());
    m_repositories.look();
    if (accounts().isEmpty())
        co_await m_accounts.migrateLegacyLoginIfNeeded();
    const QCoro::Task<> loading = m_loading.refresh();
    co_await m_accounts.dropDuplicates(); // second, because keyring calls run in their order
    co_await loading;
}

QCoro::Task<QString> AppState::prepareLoad() {
    m_preferences.retry(); // the disk may have room again
    m_oauth.storeUnsaved();
    return m_accounts.takeToken();
}

QCoro::Task<> AppState::shutDown() {
    m_care.end();
    m_sshfsMounter.close(); // also while tokens are still being stored
    QCoro::Task<> storing = m_oauth.finish(storingLimit);
    QCoro::Task<> closing = m_shared.close();
    QCoro::Task<> tunnels = m_tunnels.close();
    co_await m_connections.disconnectAll();
    co_await storing;
    co_await closing;
    co_await tunnels;
    m_preferences.retry();
}

void AppState::refresh() {
    m_loading.refresh();
}

void AppState::addAccount() {
    signIn();
}

QCoro::Task<> AppState::signIn() {
    m_loginCancelled = false;
    co_await m_accounts.addAccount();
    if (m_loginCancelled) // the user knows why it has failed
        m_report.setAccountError(std::nullopt);
}

void AppState::cancelLogin() {
    m_loginCancelled = true;
    m_oauth.cancelLogin();
}

void AppState::copyLoginAddress() const {
    m_loginPage.copyAddress();
}

void AppState::switchAccount(const QString& accountID) {
    m_report.setAccountError(std::nullopt);
    m_accounts.switchAccount(accountID);
}

void AppState::removeAccount(const QString& accountID) {
    m_report.setAccountError(std::nullopt);
    m_accounts.removeAccount(accountID);
}

void AppState::perform(int target, const QString& domain, bool alternative) {
    const std::optional<Project> project = m_visibleProjects.project(domain);
    if (!project || (rowState(domain).offers & 1 << target) == 0)
        return;
    const auto wanted = static_cast<HoverTarget>(target);
    if (ProjectActions::action(wanted).usesProject)
        m_marks.noteUse(domain);
    m_actions.perform(wanted, *project, alternative);
}

void AppState::fillSearchFromChrome() {
    fillSearch();
}

QCoro::Task<> AppState::fillSearch() {
    const ActiveTab tab = co_await domainOfActiveTab(m_context);
    m_refusals->set(Permission::automation, tab.isForbidden);
    setSearchText(tab.domain.value_or(searchText()));
}

void AppState::copyText(const QString& text) const {
    m_desktop.copyText(text);
}

void AppState::setSearchText(const QString& text) {
    if (text == searchText())
        return;
    m_visibleProjects.setSearchText(text);
    Q_EMIT searchTextChanged();
}

void AppState::setGlobalHotkeyEnabled(bool enabled) {
    if (enabled == m_globalHotkeyEnabled || m_management->fixesHotkey())
        return;
    m_globalHotkeyEnabled = enabled;
    m_report.remember(SettingKey::hotkey, enabled);
    applyHotkeySetting();
    Q_EMIT globalHotkeyEnabledChanged();
}

void AppState::setStartsAtLogin(bool wanted) {
    const bool starts = m_management->startsAtLogin().value_or(wanted);
    if (!m_loginItem.setEnabled(starts))
        m_report.log(QStringLiteral("Der Start beim Anmelden konnte nicht geändert werden."),
                     ActivityLogLevel::warning);
    m_refusals->set(Permission::loginItem, starts && m_loginItem.waitsForApproval());
    Q_EMIT startsAtLoginChanged(); // the switch follows the desktop, which may have refused
}

void AppState::setReconnectsAtStart(bool reconnects) {
    m_care.setReconnectsAtStart(reconnects);
    Q_EMIT reconnectsAtStartChanged();
}

void AppState::setAdaptsGit(bool adapts) {
    m_repositories.setOn(adapts);
}

void AppState::setQuietWorkspace(bool quiet) {
    if (quiet == m_editor.isQuiet())
        return;
    m_editor.setQuiet(quiet);
    m_report.remember(quietWorkspaceKey, quiet);
    Q_EMIT quietWorkspaceChanged();
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
