#include "State/Accounts.h"

#include "Directory/DecodingError.h"
#include "Directory/ProjectAPI.h"
#include "SignIn/OAuthManager.h"
#include "State/AccountRules.h"
#include "State/ActivityReport.h"
#include "State/ProjectLoading.h"
#include "System/Preferences.h"

#include <algorithm>

namespace {
const QString registryKey = QStringLiteral("AccountsRegistry");
const QString activeKey = QStringLiteral("ActiveAccountID");
} // namespace

Accounts::Accounts(OAuthManager& oauth, ProjectAPI& api, Preferences& preferences, ActivityReport& report,
                   ProjectLoading& loading)
    : m_oauth(oauth), m_api(api), m_preferences(preferences), m_report(report), m_loading(loading) {}

void Accounts::loadAccountsRegistry() {
    QList<Account> accounts;
    if (const std::optional<QByteArray> data = m_preferences.data(registryKey)) {
        try {
            accounts = decodeAccounts(*data);
        } catch (const DecodingError&) {
            // An unreadable registry counts as empty.
        }
    }
    std::optional<QString> active = m_preferences.text(activeKey);
    const bool listed = std::any_of(accounts.begin(), accounts.end(),
                                    [&active](const Account& account) { return account.id == active; });
    if (!listed)
        active = accounts.isEmpty() ? std::nullopt : std::optional(accounts.first().id);
    set(accounts, active);
}

void Accounts::saveAccountsRegistry() {
    if (activeID())
        m_preferences.set(activeKey, *activeID());
    else
        m_preferences.remove(activeKey);
    m_report.remember(registryKey, encodeAccounts(list()));
}

void Accounts::set(const QList<Account>& accounts, const std::optional<QString>& activeID) {
    if (activeID != m_model.activeID())
        m_loading.discard(); // a load that is under way belongs to another account
    m_model.set(accounts, activeID);
}

QCoro::Task<> Accounts::dropDuplicates() {
    const QList<Account> before = list();
    const QList<Account> kept = withoutDuplicates(before, activeID());
    if (kept.size() == before.size())
        co_return;
    for (const Account& account : before) {
        const QString id = account.id;
        if (!kept.contains(account) && id != activeID())
            co_await m_oauth.removeTokens(id);
    }
    set(withoutDuplicates(list(), activeID()), activeID());
    saveAccountsRegistry();
}

QCoro::Task<> Accounts::takeTokens() {
    if (!activeID() || (m_oauth.accessToken() && m_oauth.activeAccountID() == activeID()))
        co_return;
    const QString id = *activeID();
    co_await m_oauth.loadTokens(id);
}

QCoro::Task<> Accounts::addAccount() {
    const OperationTexts texts{.begin = {}, .failure = QStringLiteral("Login fehlgeschlagen: ")};
    const std::function<QCoro::Task<Ending>()> work = [this] { return signIn(); };
    co_await m_report.run(texts, work);
}

QCoro::Task<Ending> Accounts::signIn() {
    const OAuthManager::ChooseAccount choose = [this](const AuthResult& result) {
        return activateAccountOf(result);
    };
    std::optional<OAuthManager::SignedIn> signedIn = co_await m_oauth.signIn(choose);
    QCoro::Task<> keeping = keep(std::move(signedIn->storing)); // a locked keyring may wait for its password
    co_await m_loading.refresh();
    co_await keeping;
    co_return Ending{};
}

QCoro::Task<std::optional<QString>> Accounts::activateAccountOf(AuthResult result) {
    std::optional<QString> profileName;
    if (!result.accountID) {
        const QString token = result.accessToken;
        const ApplicationsResponse response = co_await m_api.fetchApplications(token);
        profileName = response.user.name;
    }
    QString id = result.accountID.value_or(QStringLiteral("name:") + profileName.value_or(QString()));
    const std::optional<Account> known = knownAccount(list(), id, result.email);
    if (known)
        id = known->id;
    const QString displayName = displayNameFor(result.displayName, profileName, result.email, id);
    set(withAccount(list(), {id, result.email, displayName}), id);
    if (known)
        m_report.log(QStringLiteral("Account bereits vorhanden – wird aktiviert: %1.").arg(displayName),
                     ActivityLogLevel::info);
    else
        m_report.log(QStringLiteral("Account hinzugefuegt: %1.").arg(displayName), ActivityLogLevel::success);
    co_return id;
}

QCoro::Task<> Accounts::keep(QCoro::Task<bool> storing) {
    co_await storing;
    co_await dropDuplicates();
    saveAccountsRegistry();
}

QCoro::Task<> Accounts::switchAccount(QString accountID) {
    if (accountID == activeID())
        co_return;
    const bool found = co_await m_oauth.loadTokens(accountID);
    if (!found) {
        m_report.log(QStringLiteral("Account-Wechsel fehlgeschlagen: keine Tokens gefunden."),
                     ActivityLogLevel::error);
        co_return;
    }
    set(list(), accountID);
    saveAccountsRegistry();
    m_report.log(QStringLiteral("Account gewechselt."), ActivityLogLevel::info);
    co_await m_loading.refresh();
}

QCoro::Task<> Accounts::removeAccount(QString accountID) {
    co_await m_oauth.removeTokens(accountID);
    QList<Account> remaining = list();
    remaining.removeIf([&accountID](const Account& account) { return account.id == accountID; });
    const bool wasActive = !activeID() || activeID() == accountID;
    if (!wasActive) {
        set(remaining, activeID());
    } else if (remaining.isEmpty()) {
        set({}, std::nullopt);
        m_oauth.clearSession();
        m_loading.clear();
    } else {
        const QString next = remaining.first().id;
        set(remaining, next);
        m_oauth.clearSession();
        m_loading.refresh(); // which takes the tokens of the account that is active now
    }
    saveAccountsRegistry();
    m_report.log(QStringLiteral("Account entfernt."), ActivityLogLevel::info);
}

QCoro::Task<> Accounts::migrateLegacyLoginIfNeeded() {
    Account account;
    const OAuthManager::ChooseAccount choose = [this, &account](const AuthResult& legacy) {
        return nameLegacyAccount(legacy, account);
    };
    std::optional<OAuthManager::SignedIn> signedIn = co_await m_oauth.takeOverLegacyLogin(choose);
    if (!signedIn)
        co_return;
    const bool stored = co_await signedIn->storing;
    set(withAccount(list(), account), account.id);
    saveAccountsRegistry();
    m_report.log(QStringLiteral("Bestehende Anmeldung migriert."), ActivityLogLevel::info);
    if (stored)
        co_await m_oauth.removeLegacyTokens();
}

QCoro::Task<std::optional<QString>> Accounts::nameLegacyAccount(AuthResult legacy, Account& account) {
    if (!list().isEmpty())
        co_return std::nullopt; // a sign-in was faster
    std::optional<QString> profileName;
    try {
        const QString token = legacy.accessToken;
        const ApplicationsResponse response = co_await m_api.fetchApplications(token);
        profileName = response.user.name;
        m_loading.setUserProfile(response.user);
    } catch (const Failure&) {
        // The refresh that follows reports the failure, and renews an expired token.
    }
    const QString id = legacy.accountID ? *legacy.accountID
                       : profileName    ? QStringLiteral("name:") + *profileName
                                        : QStringLiteral("legacy");
    account = {id, legacy.email, displayNameFor(legacy.displayName, profileName, legacy.email, id)};
    co_return id;
}
