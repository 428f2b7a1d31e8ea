#pragma once

#include "Directory/Account.h"
#include "State/AccountListModel.h"
#include "System/Reporter.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

#include <optional>

struct AuthResult;
class ActivityReport;
class OAuthManager;
class Preferences;
class ProjectAPI;
class ProjectLoading;

/// The registry of accounts, and which of them is active. The tokens belong to OAuthManager. Main thread.
///
/// The registry and the keyring are two stores, and the program may end between two writes. The order makes
/// sure that what is left is harmless: tokens are stored before the registry names their account (left
/// behind: tokens that the next sign-in replaces), and deleted before the registry forgets it (left behind:
/// an account that asks for a new sign-in and can be removed again). A registry that cannot be read is kept
/// under another key.
class Accounts : public QObject {
    Q_OBJECT

  public:
    /// All that is referred to outlives this.
    Accounts(OAuthManager& oauth, ProjectAPI& api, Preferences& preferences, ActivityReport& report,
             ProjectLoading& loading);

    /// Signs in through the browser, then adds the account or activates the known one. Never fails: every
    /// outcome is logged, as in what follows.
    QCoro::Task<> addAccount();
    QCoro::Task<> switchAccount(QString accountID);
    QCoro::Task<> removeAccount(QString accountID);

    void loadAccountsRegistry();
    void saveAccountsRegistry();
    /// Drops accounts whose e-mail another one has, with their tokens.
    QCoro::Task<> dropDuplicates();
    /// Makes a login of the older layout, which knew one account, the first account. Its tokens are in use
    /// afterwards, and still on their way into the keyring.
    QCoro::Task<> migrateLegacyLoginIfNeeded();
    /// Takes the stored tokens of the active account into use where they are not, and yields its access
    /// token; empty when there is none. A locked keyring has none.
    QCoro::Task<QString> takeToken();

    [[nodiscard]] const QList<Account>& list() const { return m_model.accounts(); }

    [[nodiscard]] const std::optional<QString>& activeID() const { return m_model.activeID(); }

    [[nodiscard]] AccountListModel* model() { return &m_model; }

  private:
    QCoro::Task<Ending> signIn();
    QCoro::Task<std::optional<QString>> activateAccountOf(AuthResult result);
    QCoro::Task<std::optional<QString>> activateLegacyAccount(AuthResult legacy);
    QCoro::Task<> keep(QCoro::Task<bool> storing);
    QCoro::Task<> keepLegacy(QString accountID, QCoro::Task<bool> storing);
    void set(const QList<Account>& accounts, const std::optional<QString>& activeID);
    void setRegistryAside();
    [[nodiscard]] bool knows(const QString& accountID) const;
    [[nodiscard]] bool usesTokensOfActive() const;

    OAuthManager& m_oauth;
    ProjectAPI& m_api;
    Preferences& m_preferences;
    ActivityReport& m_report;
    ProjectLoading& m_loading;
    AccountListModel m_model;
    int m_choice = 0; ///< counts who has been chosen as the active account; a later choice ends a switch
};
