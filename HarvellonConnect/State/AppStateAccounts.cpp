#include "State/AppState.h"

#include "Directory/DecodingError.h"
#include "State/AccountRules.h"
#include "State/Failures.h"

// The registry and the keyring are two stores, and the program may end between two writes. The order makes
// sure that what is left is harmless: tokens are stored before the registry names their account (left behind:
// tokens that the next sign-in replaces), and deleted before the registry forgets it (left behind: an account
// that asks for a new sign-in and can be removed again).

namespace {
const QString registryKey = QStringLiteral("AccountsRegistry");
const QString activeKey = QStringLiteral("ActiveAccountID");
} // namespace

void AppState::loadAccountsRegistry() {
    QList<Account> accounts;
    if (const std::optional<QByteArray> data = m_preferences.data(registryKey)) {
        try {
            accounts = decodeAccounts(*data);
        } catch (const DecodingError&) {
            // Counts as empty.
        }
    }
    std::optional<QString> active = m_preferences.text(activeKey);
    const bool listed = std::any_of(accounts.begin(), accounts.end(),
                                    [&active](const Account& account) { return account.id == active; });
    if (!listed)
        active = accounts.isEmpty() ? std::nullopt : std::optional(accounts.first().id);
    setAccounts(accounts, active);
}

void AppState::saveAccountsRegistry() {
    if (m_activeAccountID)
        m_preferences.set(activeKey, *m_activeAccountID);
    else
        m_preferences.remove(activeKey);
    remember(registryKey, encodeAccounts(m_accounts));
}

void AppState::setAccounts(const QList<Account>& accounts, const std::optional<QString>& activeID) {
    if (activeID != m_activeAccountID)
        ++m_loadGeneration; // a load that is under way belongs to another account
    m_accounts = accounts;
    m_activeAccountID = activeID;
    m_accountList.set(accounts, activeID);
}

QCoro::Task<> AppState::dropDuplicates() {
    const QList<Account> before = m_accounts;
    const QList<Account> kept = withoutDuplicates(before, m_activeAccountID);
    if (kept.size() == before.size())
        co_return;
    for (const Account& account : before) {
        const QString id = account.id;
        if (!kept.contains(account) && id != m_activeAccountID)
            co_await m_oauth.removeTokens(id);
    }
    setAccounts(withoutDuplicates(m_accounts, m_activeAccountID), m_activeAccountID);
    saveAccountsRegistry();
}

void AppState::startAddAccount() {
    addAccount();
}

QCoro::Task<> AppState::addAccount() {
    std::exception_ptr failure;
    try {
        const AuthResult result = co_await m_oauth.startLogin();
        co_await activate(result);
        co_return;
    } catch (...) {
        failure = std::current_exception();
    }
    log(QStringLiteral("Login fehlgeschlagen: ") + descriptionOf(failure), ActivityLogLevel::error);
}

QCoro::Task<> AppState::activate(AuthResult result) {
    std::optional<QString> profileName;
    if (!result.accountID) {
        const QString token = result.accessToken;
        try {
            const ApplicationsResponse response = co_await m_api.fetchApplications(token);
            profileName = response.user.name;
        } catch (...) {
            // The tokens of a login that nobody can be named for are of no use: the former ones count again.
            m_oauth.clearSession();
            throw;
        }
    }
    QString id = result.accountID.value_or(QStringLiteral("name:") + profileName.value_or(QString()));
    const std::optional<Account> known = knownAccount(m_accounts, id, result.email);
    if (known)
        id = known->id;
    const QString displayName = displayNameFor(result.displayName, profileName, result.email, id);

    const QString accessToken = result.accessToken;
    const std::optional<QString> refreshToken = result.refreshToken;
    setAccounts(withAccount(m_accounts, {id, result.email, displayName}), id);
    // A keyring may wait for its password: the session goes on meanwhile.
    QCoro::Task<> keeping = keepAccount(accessToken, refreshToken, id);
    if (known)
        log(QStringLiteral("Account bereits vorhanden – wird aktiviert: %1.").arg(displayName),
            ActivityLogLevel::info);
    else
        log(QStringLiteral("Account hinzugefuegt: %1.").arg(displayName), ActivityLogLevel::success);
    co_await refresh();
    co_await keeping;
}

QCoro::Task<> AppState::keepAccount(QString accessToken, std::optional<QString> refreshToken,
                                    QString accountID) {
    co_await m_oauth.saveTokens(accessToken, refreshToken, accountID);
    co_await dropDuplicates();
    saveAccountsRegistry();
}

void AppState::startCancelLogin() {
    m_oauth.cancelLogin();
}

void AppState::startSwitchAccount(const QString& accountID) {
    switchAccount(accountID);
}

QCoro::Task<> AppState::switchAccount(QString accountID) {
    if (accountID == m_activeAccountID)
        co_return;
    const bool found = co_await m_oauth.loadTokens(accountID);
    if (!found) {
        log(QStringLiteral("Account-Wechsel fehlgeschlagen: keine Tokens gefunden."),
            ActivityLogLevel::error);
        co_return;
    }
    setAccounts(m_accounts, accountID);
    saveAccountsRegistry();
    log(QStringLiteral("Account gewechselt."), ActivityLogLevel::info);
    co_await refresh();
}

void AppState::startRemoveAccount(const QString& accountID) {
    removeAccount(accountID);
}

QCoro::Task<> AppState::removeAccount(QString accountID) {
    co_await m_oauth.removeTokens(accountID);
    QList<Account> remaining = m_accounts;
    remaining.removeIf([&accountID](const Account& account) { return account.id == accountID; });
    if (m_activeAccountID && m_activeAccountID != accountID) {
        setAccounts(remaining, m_activeAccountID);
        saveAccountsRegistry();
        log(QStringLiteral("Account entfernt."), ActivityLogLevel::info);
        co_return;
    }
    if (remaining.isEmpty()) {
        setAccounts({}, std::nullopt);
        m_oauth.clearSession();
        setUserProfile(std::nullopt);
        setProjects({});
        setConnectionStatus(ConnectionStatus::Case::idle);
    } else {
        const QString next = remaining.first().id;
        setAccounts(remaining, next);
        m_oauth.clearSession();
        startRefresh(); // which loads the tokens of the account that is active now
    }
    saveAccountsRegistry();
    log(QStringLiteral("Account entfernt."), ActivityLogLevel::info);
}

QCoro::Task<> AppState::migrateLegacyLoginIfNeeded() {
    const std::optional<OAuthManager::Tokens> legacy = co_await m_oauth.loadLegacyTokens();
    if (!legacy || !m_accounts.isEmpty())
        co_return;
    const QString accessToken = legacy->accessToken;
    const std::optional<QString> refreshToken = legacy->refreshToken;
    std::optional<QString> profileName;
    try {
        const ApplicationsResponse response = co_await m_api.fetchApplications(accessToken);
        profileName = response.user.name;
        setUserProfile(response.user);
    } catch (...) {
        // The refresh that follows tells what is wrong, and renews an outdated token.
    }
    const IdentityClaims claims = IdentityClaims::read(accessToken);
    const QString id = claims.sub    ? *claims.sub
                       : profileName ? QStringLiteral("name:") + *profileName
                                     : QStringLiteral("legacy");
    const bool stored = co_await m_oauth.saveTokens(accessToken, refreshToken, id);
    const Account account{id, claims.email, displayNameFor(claims.name, profileName, claims.email, id)};
    setAccounts(withAccount(m_accounts, account), id);
    saveAccountsRegistry();
    log(QStringLiteral("Bestehende Anmeldung migriert."), ActivityLogLevel::info);
    if (stored)
        co_await m_oauth.removeLegacyTokens();
}
