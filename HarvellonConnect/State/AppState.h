#pragma once

#include "Actions/VSCodeLauncher.h"
#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/ProjectAPI.h"
#include "Mounting/SSHFSGuidance.h"
#include "Mounting/SSHFSMounter.h"
#include "SignIn/OAuthManager.h"
#include "State/AccountListModel.h"
#include "State/ActivityLog.h"
#include "State/ProjectListModel.h"
#include "System/HostSystem.h"
#include "System/Native/HotkeyManager.h"
#include "System/Native/LoginItem.h"
#include "System/Network/ServerAddress.h"
#include "System/Preferences.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariantMap>
#include <QtQmlIntegration>

#include <chrono>
#include <functional>
#include <optional>

class QNetworkAccessManager;

/// The state of the last project load.
namespace ConnectionStatus {
Q_NAMESPACE
QML_ELEMENT
enum class Case { idle, checking, success, failure };
Q_ENUM_NS(Case)
} // namespace ConnectionStatus

/// What the state needs of the desktop. All are called on the main thread.
struct DesktopCommands {
    std::function<void()> togglePanel;
    std::function<void(const QString& text)> copyText;
    /// A mount ended by itself.
    std::function<void(const QString& domain)> tellMountEnded;
};

/// What the state is built from; all references outlive it.
struct AppServices {
    HostSystem host;
    ServerAddress server;
    Shell& shell;
    KeychainStore& keychain;
    Preferences& preferences;
    QNetworkAccessManager& network;
};

/// The one observable state of the program, and the operations that the views call. No operation fails
/// towards its caller: every outcome is published state and a line of the activity log. Main thread.
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
    Q_PROPERTY(QString connectionFailure READ connectionFailure NOTIFY connectionStatusChanged)
    Q_PROPERTY(bool signedIn READ signedIn NOTIFY userProfileChanged)
    Q_PROPERTY(QString userName READ userName NOTIFY userProfileChanged)
    Q_PROPERTY(bool isAuthenticating READ isAuthenticating NOTIFY isAuthenticatingChanged)
    Q_PROPERTY(AccountListModel* accountList READ accountList CONSTANT)
    Q_PROPERTY(QVariantMap guidance READ guidanceMap NOTIFY guidanceChanged)
    Q_PROPERTY(QString hotkeyProblem READ hotkeyProblem NOTIFY hotkeyProblemChanged)
    Q_PROPERTY(bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY startsAtLoginChanged)
    Q_PROPERTY(bool globalHotkeyEnabled READ globalHotkeyEnabled WRITE setGlobalHotkeyEnabled NOTIFY
                   globalHotkeyEnabledChanged)

  public:
    /// Runs the start-up sequence; the first project load goes on after it has returned.
    AppState(AppServices services, DesktopCommands desktop, QObject* parent = nullptr);
    ~AppState() override;

    [[nodiscard]] const QList<Project>& projects() const { return m_projects; }

    [[nodiscard]] ProjectListModel* visibleProjects() { return &m_visibleProjects; }

    [[nodiscard]] int projectCount() const { return static_cast<int>(m_projects.size()); }

    [[nodiscard]] QString searchText() const { return m_searchText; }

    void setSearchText(const QString& text);

    [[nodiscard]] const QSet<QString>& connectedDomains() const { return m_connectedDomains; }

    [[nodiscard]] bool isLoading() const { return m_loads > 0; }

    [[nodiscard]] const std::optional<QString>& lastError() const { return m_lastError; }

    [[nodiscard]] ActivityLog* activityLog() { return &m_activityLog; }

    [[nodiscard]] ConnectionStatus::Case connectionStatus() const { return m_connectionStatus; }

    [[nodiscard]] QString connectionFailure() const { return m_connectionFailure; } ///< of the failure case

    [[nodiscard]] const std::optional<UserProfile>& userProfile() const { return m_userProfile; }

    [[nodiscard]] const QList<Account>& accounts() const { return m_accounts; }

    [[nodiscard]] AccountListModel* accountList() { return &m_accountList; }

    [[nodiscard]] const std::optional<QString>& activeAccountID() const { return m_activeAccountID; }

    [[nodiscard]] bool globalHotkeyEnabled() const { return m_globalHotkeyEnabled; }

    void setGlobalHotkeyEnabled(bool enabled);

    /// Asks the desktop, which keeps it.
    [[nodiscard]] bool startsAtLogin() const { return m_loginItem.isEnabled(); }

    void setStartsAtLogin(bool starts);

    [[nodiscard]] QString hotkeyProblem() const { return m_hotkeyProblem; } ///< empty when the key is ours

    [[nodiscard]] QString lastErrorText() const { return m_lastError.value_or(QString()); }

    [[nodiscard]] bool signedIn() const { return m_userProfile.has_value(); }

    [[nodiscard]] QString userName() const { return m_userProfile ? m_userProfile->name : QString(); }

    [[nodiscard]] bool isAuthenticating() const { return m_oauth.isAuthenticating(); }

    /// The alert that is open: "title", "text" and "buttons" (list of texts); empty when there is none.
    [[nodiscard]] QVariantMap guidanceMap() const;

    [[nodiscard]] const HostSystem& host() const { return m_host; }

    [[nodiscard]] OAuthManager& oauth() { return m_oauth; }

    [[nodiscard]] SSHFSMounter& sshfsMounter() { return m_sshfsMounter; }

    /// Appends one line to the activity log.
    void log(const QString& message, ActivityLogLevel level);
    QCoro::Task<> clearLeftBehind(QString domain);
    /// Stores the tokens of a sign-in, then the account.
    QCoro::Task<> keepAccount(QString accessToken, std::optional<QString> refreshToken, QString accountID);
    /// Keeps a preference, and says where that fails.
    void remember(const QString& key, const QVariant& value);
    /// What is no failure, but must not be overlooked.
    void warn(const QString& message);

    // What the views start. Each returns at once.
    Q_INVOKABLE void startRefresh();
    Q_INVOKABLE void startAddAccount();
    Q_INVOKABLE void startSwitchAccount(const QString& accountID);
    Q_INVOKABLE void startRemoveAccount(const QString& accountID);
    Q_INVOKABLE void startConnect(const QString& domain);
    Q_INVOKABLE void startDisconnect(const QString& domain);
    Q_INVOKABLE void startOpenInVSCode(const QString& domain);
    Q_INVOKABLE void startOpenInFinder(const QString& domain);
    Q_INVOKABLE void startOpenShell(const QString& domain);
    Q_INVOKABLE void startOpenDatabase(const QString& domain);
    Q_INVOKABLE void startClearCache(const QString& domain);
    Q_INVOKABLE void startOpenSite(const QString& domain, bool backEnd);
    Q_INVOKABLE void startFillSearchFromChrome();
    Q_INVOKABLE void startCancelLogin();
    /// Closes the open alert with the button that was pressed, counted from 0; -1 for none.
    Q_INVOKABLE void answerGuidance(int button);
    Q_INVOKABLE void clearActivityLog();
    Q_INVOKABLE void dismissLastError();

    /// Loads profile and projects, with one renewal of the token where it is refused.
    QCoro::Task<> refresh();
    /// Signs in through the browser, then adds the account or activates the known one.
    QCoro::Task<> addAccount();
    QCoro::Task<> switchAccount(QString accountID);
    QCoro::Task<> removeAccount(QString accountID);
    QCoro::Task<> connectProject(Project project);
    QCoro::Task<> disconnectProject(QString domain, bool force);
    void openInFinder(const Project& project);
    QCoro::Task<> openInVSCode(Project project);
    QCoro::Task<> openShell(Project project);
    QCoro::Task<> openDatabase(Project project);
    QCoro::Task<> clearCache(Project project);
    QCoro::Task<> fillSearchFromChrome();
    /// Takes every mount down, and waits for tokens that are being renewed or stored; done within five
    /// seconds. Nothing is mounted afterwards.
    QCoro::Task<> shutDown();

  Q_SIGNALS:
    void projectsChanged();
    void searchTextChanged();
    void connectedDomainsChanged();
    void isLoadingChanged();
    void lastErrorChanged();
    void connectionStatusChanged();
    void userProfileChanged();
    void isAuthenticatingChanged();
    void globalHotkeyEnabledChanged();
    void startsAtLoginChanged();
    void hotkeyProblemChanged();
    void guidanceChanged();

  private:
    // AppState.cpp
    QCoro::Task<> startUp();
    void applyHotkeySetting();
    void mountEnded(const QString& domain, qint32 exitCode);
    [[nodiscard]] std::optional<Project> project(const QString& domain) const;

    void setLoading(int change);
    void setLastError(std::optional<QString> error);
    void setConnectionStatus(ConnectionStatus::Case status, const QString& failure = {});
    void setUserProfile(std::optional<UserProfile> profile);
    void setProjects(const ProjectList& list);

    // AppStateProjects.cpp
    QCoro::Task<> load(int generation);
    QCoro::Task<> publish(ApplicationsResponse response, int generation);
    void publishFailure(const QString& reason, bool asLastError);

    // AppStateAccounts.cpp
    void loadAccountsRegistry();
    void saveAccountsRegistry();
    void setAccounts(const QList<Account>& accounts, const std::optional<QString>& activeID);
    QCoro::Task<> dropDuplicates();
    QCoro::Task<> migrateLegacyLoginIfNeeded();
    QCoro::Task<> activate(AuthResult result);

    // AppStateConnect.cpp
    void publishSessions();
    QCoro::Task<std::optional<QString>> mountProject(Project project);
    QCoro::Task<std::optional<QString>> documentTarget(Project project, QString mountPoint,
                                                       std::chrono::seconds budget);

    // AppStateActions.cpp
    void openAddress(const QString& address);
    QCoro::Task<bool> opensAddresses(QString scheme);
    void openTerminal(const QStringList& command = {});

    // AppStateGuidance.cpp
    void showSSHFSSetupAlert();
    void showSSHFSRepairAlert();
    void show(const Guidance& guidance);

    HostSystem m_host;
    Shell& m_shell;
    Preferences& m_preferences;
    QNetworkAccessManager& m_network;
    DesktopCommands m_desktop;

    QList<Project> m_projects;
    ProjectListModel m_visibleProjects;
    QString m_searchText;
    QSet<QString> m_connectedDomains;
    OAuthManager m_oauth;
    int m_loads = 0;          ///< loads under way
    int m_loadGeneration = 0; ///< raised whenever another account's projects are wanted
    std::optional<QString> m_lastError;
    ActivityLog m_activityLog;
    ConnectionStatus::Case m_connectionStatus = ConnectionStatus::Case::idle;
    QString m_connectionFailure;
    std::optional<UserProfile> m_userProfile;
    QList<Account> m_accounts;
    AccountListModel m_accountList;
    std::optional<QString> m_activeAccountID;
    bool m_globalHotkeyEnabled = true;
    QString m_hotkeyProblem;
    std::optional<Guidance> m_guidance; ///< the alert that is open
    QSet<QString> m_connecting;
    ProjectAPI m_api;
    HotkeyManager m_hotkeyManager;
    LoginItem m_loginItem;
    SSHFSMounter m_sshfsMounter;
    VSCodeLauncher m_editor;
};
