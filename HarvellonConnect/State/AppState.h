#pragma once

#include "Actions/Database/DatabaseTunnels.h"
#include "Actions/ProjectActions.h"
#include "Actions/VSCodeLauncher.h"
#include "Directory/ProjectAPI.h"
#include "Mounting/SSHFSMounter.h"
#include "SignIn/OAuthManager.h"
#include "State/Access/AccessHelp.h"
#include "State/Accounts.h"
#include "State/ActivityReport.h"
#include "State/ConnectionCare.h"
#include "State/Connections.h"
#include "State/Consent/Refusals.h"
#include "State/Diagnosis/Diagnosis.h"
#include "State/Git/MountedRepositories.h"
#include "State/GuidanceQuestion.h"
#include "State/Login/LoginPage.h"
#include "State/Managed/Management.h"
#include "State/Programs/ProgramSettings.h"
#include "State/ProjectLoading.h"
#include "State/Rows/ProjectMarks.h"
#include "State/Setup/SetupSteps.h"
#include "System/HostSystem.h"
#include "System/Native/HotkeyManager.h"
#include "System/Native/LoginItem.h"
#include "System/Native/NetworkMonitor.h"
#include "System/Native/SleepMonitor.h"
#include "System/Network/ServerAddress.h"
#include "System/Ssh/SharedConnections.h"

#include <QDeadlineTimer>
#include <QtQmlIntegration>

class Preferences;

/// What the state needs of the desktop. All are called on the main thread.
struct DesktopCommands {
    std::function<void()> togglePanel;
    std::function<void(const QString& text)> copyText;
    /// Mounts ended by themselves, shortly one after the other.
    std::function<void(const QStringList& domains)> tellMountsEnded;
};

/// What the state is built from; all references outlive it.
struct AppServices {
    HostSystem host;
    ServerAddress server;
    Shell& shell;
    std::shared_ptr<KeychainStore> keychain; ///< also of calls that outlive the program's end
    Preferences& preferences;
    QNetworkAccessManager& network;
};

/// The one observable state of the program. It makes the parts that do the work, starts and ends them in
/// order, publishes what they own and hands the views' operations to them. No operation fails towards its
/// caller: every outcome is published state and a line of the activity log. Main thread.
class AppState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once, by the application")

    Q_PROPERTY(ProjectListModel* visibleProjects READ visibleProjects CONSTANT)
    Q_PROPERTY(int projectCount READ projectCount NOTIFY projectsChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QString lastError READ lastErrorText NOTIFY lastErrorChanged)
    Q_PROPERTY(ActivityLog* activityLog READ activityLog CONSTANT)
    Q_PROPERTY(ConnectionStatus::Case connectionStatus READ connectionStatus NOTIFY connectionStatusChanged)
    Q_PROPERTY(bool signedIn READ signedIn NOTIFY userProfileChanged)
    Q_PROPERTY(QString userName READ userName NOTIFY userProfileChanged)
    Q_PROPERTY(bool isAuthenticating READ isAuthenticating NOTIFY isAuthenticatingChanged)
    Q_PROPERTY(QString accountError READ accountError NOTIFY accountErrorChanged)
    Q_PROPERTY(AccountListModel* accountList READ accountList CONSTANT)
    Q_PROPERTY(Diagnosis* diagnosis READ diagnosis CONSTANT)
    Q_PROPERTY(ProgramSettings* programs READ programs CONSTANT)
    Q_PROPERTY(AccessHelp* access READ access CONSTANT)
    Q_PROPERTY(SetupSteps* setup READ setup CONSTANT)
    Q_PROPERTY(Management* management READ management CONSTANT)
    Q_PROPERTY(QVariantMap guidance READ guidance NOTIFY guidanceChanged)
    Q_PROPERTY(QString hotkeyProblem READ hotkeyProblem NOTIFY hotkeyProblemChanged)
    Q_PROPERTY(bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY startsAtLoginChanged)
    Q_PROPERTY(bool reconnectsAtStart READ reconnectsAtStart WRITE setReconnectsAtStart NOTIFY
                   reconnectsAtStartChanged)
    Q_PROPERTY(bool adaptsGit READ adaptsGit WRITE setAdaptsGit NOTIFY gitChanged)
    Q_PROPERTY(QString gitProblem READ gitProblem NOTIFY gitChanged)
    Q_PROPERTY(Refusals* refusals READ refusals CONSTANT)
    Q_PROPERTY(bool quietWorkspace READ quietWorkspace WRITE setQuietWorkspace NOTIFY quietWorkspaceChanged)
    Q_PROPERTY(bool globalHotkeyEnabled READ globalHotkeyEnabled WRITE setGlobalHotkeyEnabled NOTIFY
                   globalHotkeyEnabledChanged)

  public:
    /// Runs the start-up sequence; the first project load goes on after it has returned.
    AppState(AppServices services, DesktopCommands desktop, QObject* parent = nullptr);
    ~AppState() override;

    /// The parts that do the work, for callers that wait for an operation to end.
    struct Parts {
        OAuthManager& oauth;
        SSHFSMounter& sshfsMounter;
        ProjectLoading& loading;
        Accounts& accounts;
        Connections& connections;
        ConnectionCare& care;
        MountedRepositories& repositories;
        ProjectActions& actions;
        ActivityReport& report;
        ActionContext& context;
        ProjectMarks& marks;
    };

    [[nodiscard]] Parts parts();

    // What the views call. Each starts the operation of the same name and returns at once.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void addAccount();
    Q_INVOKABLE void cancelLogin();
    /// Copies the address of the login that waits for the browser.
    Q_INVOKABLE void copyLoginAddress() const;
    Q_INVOKABLE void switchAccount(const QString& accountID);
    Q_INVOKABLE void removeAccount(const QString& accountID);
    /// Does what can be done with a project; `target` is the value of a HoverTarget. Does nothing where the
    /// project's row does not offer it.
    Q_INVOKABLE void perform(int target, const QString& domain, bool alternative);
    Q_INVOKABLE void fillSearchFromChrome();

    /// Closes the open alert with the button that was pressed, counted from 0; -1 for none.
    Q_INVOKABLE void answerGuidance(int button) { m_guidance.answer(button); }

    Q_INVOKABLE void dismissLastError() { m_report.setLastError(std::nullopt); }

    Q_INVOKABLE void dismissAccountError() { m_report.setAccountError(std::nullopt); }

    Q_INVOKABLE void copyText(const QString& text) const;

    void setSearchText(const QString& text);
    void setGlobalHotkeyEnabled(bool enabled);
    void setStartsAtLogin(bool starts);
    void setReconnectsAtStart(bool reconnects);
    void setAdaptsGit(bool adapts);
    void setQuietWorkspace(bool quiet);

    /// Takes every mount down, and waits for tokens that are being renewed or stored; done within five
    /// seconds. Nothing is mounted afterwards.
    QCoro::Task<> shutDown();

    /// Whether `shutDown` would have nothing to do.
    [[nodiscard]] bool isIdle() const {
        return m_sshfsMounter.isIdle() && m_oauth.isIdle() && m_shared.isIdle() && m_tunnels.isIdle();
    }

    /// What a row of `domain` shows and offers.
    [[nodiscard]] RowState rowState(const QString& domain) const;

    [[nodiscard]] const HostSystem& host() const { return m_host; }

    [[nodiscard]] const QList<Project>& projects() const { return m_loading.projects(); }

    [[nodiscard]] ProjectListModel* visibleProjects() { return &m_visibleProjects; }

    [[nodiscard]] int projectCount() const { return static_cast<int>(projects().size()); }

    [[nodiscard]] QString searchText() const { return m_visibleProjects.searchText(); }

    [[nodiscard]] const QSet<QString>& connectedDomains() const { return m_connections.connectedDomains(); }

    [[nodiscard]] bool isLoading() const { return m_loading.isLoading(); }

    [[nodiscard]] const std::optional<QString>& lastError() const { return m_report.lastError(); }

    [[nodiscard]] QString lastErrorText() const { return lastError().value_or(QString()); }

    [[nodiscard]] ActivityLog* activityLog() { return m_report.activityLog(); }

    [[nodiscard]] ConnectionStatus::Case connectionStatus() const { return m_loading.connectionStatus(); }

    [[nodiscard]] const std::optional<UserProfile>& userProfile() const { return m_loading.userProfile(); }

    [[nodiscard]] bool signedIn() const { return userProfile().has_value(); }

    [[nodiscard]] QString userName() const { return signedIn() ? userProfile()->name : QString(); }

    [[nodiscard]] bool isAuthenticating() const { return m_oauth.isAuthenticating(); }

    /// What went wrong with the last sign-in or an account, until the next attempt; empty when nothing did.
    [[nodiscard]] QString accountError() const { return m_report.accountError().value_or(QString()); }

    [[nodiscard]] const QList<Account>& accounts() const { return m_accounts.list(); }

    [[nodiscard]] AccountListModel* accountList() { return m_accounts.model(); }

    [[nodiscard]] ProgramSettings* programs() const { return m_programs.get(); }

    [[nodiscard]] const std::optional<QString>& activeAccountID() const { return m_accounts.activeID(); }

    [[nodiscard]] bool globalHotkeyEnabled() const { return m_globalHotkeyEnabled; }

    [[nodiscard]] QString hotkeyProblem() const { return m_hotkeyProblem; } ///< empty when the key is ours

    /// Asks the desktop, which keeps it.
    [[nodiscard]] bool startsAtLogin() const { return m_loginItem.isEnabled(); }

    [[nodiscard]] bool reconnectsAtStart() const { return m_care.reconnectsAtStart(); }

    /// What the user's configuration of git says.
    [[nodiscard]] bool adaptsGit() const { return m_repositories.isOn(); }

    /// Why `adaptsGit` could not be changed; empty when it could.
    [[nodiscard]] QString gitProblem() const { return m_repositories.problem(); }

    [[nodiscard]] Refusals* refusals() const { return m_refusals.get(); }

    [[nodiscard]] bool quietWorkspace() const { return m_editor.isQuiet(); }

    [[nodiscard]] AccessHelp* access() const { return m_access.get(); }

    [[nodiscard]] Diagnosis* diagnosis() const { return m_diagnosis.get(); }

    [[nodiscard]] SetupSteps* setup() const { return m_setup.get(); }

    [[nodiscard]] Management* management() const { return m_management.get(); }

    /// The alert that is open: "title", "text" and "buttons" (list of texts); empty when there is none.
    [[nodiscard]] QVariantMap guidance() const { return m_guidance.map(); }

  Q_SIGNALS:
    void projectsChanged();
    void searchTextChanged();
    void isLoadingChanged();
    void lastErrorChanged();
    void connectionStatusChanged();
    void userProfileChanged();
    void isAuthenticatingChanged();
    void accountErrorChanged();
    void globalHotkeyEnabledChanged();
    void startsAtLoginChanged();
    void reconnectsAtStartChanged();
    void gitChanged();
    void quietWorkspaceChanged();
    void hotkeyProblemChanged();
    void guidanceChanged();

  private:
    void publishParts();
    void wireHotkey();
    QCoro::Task<> startUp();
    QCoro::Task<> signIn();
    QCoro::Task<QString> prepareLoad();
    QCoro::Task<> fillSearch();
    void applyHotkeySetting();
    void showKeptProjects();
    void networkChanged();
    QCoro::Task<> detachForSleep();

    const HostSystem m_host;
    Preferences& m_preferences;
    const std::unique_ptr<Management> m_management = std::make_unique<Management>(m_preferences);
    DesktopCommands m_desktop;

    ActivityReport m_report;
    OAuthManager m_oauth;
    ProjectAPI m_api;
    HotkeyManager m_hotkeyManager;
    LoginItem m_loginItem;
    SSHFSMounter m_sshfsMounter;
    VSCodeLauncher m_editor;
    SharedConnections m_shared;
    const std::unique_ptr<ProgramSettings> m_programs;
    DatabaseTunnels m_tunnels;
    ActionContext m_context;
    LoginPage m_loginPage;
    GuidanceQuestion m_guidance;
    const std::unique_ptr<AccessHelp> m_access;
    const std::unique_ptr<SetupSteps> m_setup;
    ProjectListModel m_visibleProjects;
    ProjectLoading m_loading;
    Accounts m_accounts;
    ProjectMarks m_marks;
    Connections m_connections;
    ConnectionCare m_care;
    MountedRepositories m_repositories;
    const std::unique_ptr<Diagnosis> m_diagnosis;
    ProjectActions m_actions;
    std::unique_ptr<Refusals> m_refusals = std::make_unique<Refusals>(m_context, m_connections);
    SleepMonitor m_sleepMonitor;
    NetworkMonitor m_networkMonitor;
    QDeadlineTimer m_nextLoad;     ///< a load that failed is not tried again by itself before
    bool m_loginCancelled = false; ///< by the user, the last one
    bool m_globalHotkeyEnabled = true;
    QString m_hotkeyProblem;
};
