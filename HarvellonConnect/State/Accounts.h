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
/// an account that asks for a new sign-in and can be removed again).
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
    /// Makes a login of the older layout, which knew one account, the first account.
    QCoro::Task<> migrateLegacyLoginIfNeeded();
    /// Takes the stored tokens of the active account into use where they are not; a locked keyring has none.
    QCoro::Task<> takeTokens();

    [[nodiscard]] const QList<Account>& list() const { return m_model.accounts(); }

    [[nodiscard]] const std::optional<QString>& activeID() const { return m_model.activeID(); }

    [[nodiscard]] AccountListModel* model() { return &m_model; }

  private:
    QCoro::Task<Ending> signIn();
    QCoro::Task<std::optional<QString>> activateAccountOf(AuthResult result);
    QCoro::Task<std::optional<QString>> nameLegacyAccount(AuthResult legacy, Account& account);
    QCoro::Task<> keep(QCoro::Task<bool> storing);
    void set(const QList<Account>& accounts, const std::optional<QString>& activeID);

    OAuthManager& m_oauth;
    ProjectAPI& m_api;
    Preferences& m_preferences;
    ActivityReport& m_report;
    ProjectLoading& m_loading;
    AccountListModel m_model;
};
