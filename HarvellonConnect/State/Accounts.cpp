#include "State/Accounts.h"

#include "Directory/DecodingError.h"
#include "Directory/ProjectAPI.h"
#include "SignIn/OAuthManager.h"
#include "State/AccountRules.h"
#include "State/ActivityReport.h"
#include "State/ProjectLoading.h"
#include "System/Preferences.h"

#include <QPointer>

#include <algorithm>

namespace {
const QString registryKey = QStringLiteral("AccountsRegistry");
const QString activeKey = QStringLiteral("ActiveAccountID");
const QString unreadableKey = QStringLiteral("AccountsRegistryUnreadable");
} // namespace

Accounts::Accounts(OAuthManager& oauth, ProjectAPI& api, Preferences& preferences, ActivityReport& report,
                   ProjectLoading& loading)
    : m_oauth(oauth), m_api(api), m_preferences(preferences), m_report(report), m_loading(loading) {}

void Accounts::loadAccountsRegistry() {
    QList<Account> accounts;
    if (m_preferences.value(registryKey).isValid()) {
        try {
            accounts = decodeAccounts(m_preferences.data(registryKey).value_or(QByteArray()));
        } catch (const DecodingError&) {
            setRegistryAside(); // it counts as empty
        }
    }
    std::optional<QString> active = m_preferences.text(activeKey);
    const bool listed = std::any_of(accounts.begin(), accounts.end(),
                                    [&active](const Account& account) { return account.id == active; });
    if (!listed)
        active = accounts.isEmpty() ? std::nullopt : std::optional(accounts.first().id);
    set(accounts, active);
}

void Accounts::setRegistryAside() {
    const QVariant registry = m_preferences.value(registryKey);
    if (m_preferences.value(unreadableKey) != registry)
        m_report.remember(unreadableKey, registry);
}

void Accounts::saveAccountsRegistry() {
    m_report.remember({{registryKey, encodeAccounts(list())},
                       {activeKey, activeID() ? QVariant(*activeID()) : QVariant()}});
}

bool Accounts::knows(const QString& accountID) const {
    return std::any_of(list().begin(), list().end(),
                       [&accountID](const Account& account) { return account.id == accountID; });
}

bool Accounts::usesTokensOfActive() const {
    return activeID() && m_oauth.accessToken() && m_oauth.activeAccountID() == activeID();
}

void Accounts::set(const QList<Account>& accounts, const std::optional<QString>& activeID) {
    if (activeID != m_model.activeID()) {
        ++m_choice;
        m_loading.discard(); // a load that is under way belongs to another account
    }
    const bool replaced = m_model.activeID() && activeID != m_model.activeID();
    m_model.set(accounts, activeID);
    if (replaced)
        m_loading.clear(); // nobody may take the former account's list for the one that is loading
}

QCoro::Task<> Accounts::dropDuplicates() {
    const QList<Account> before = list();
    set(withoutDuplicates(before, activeID()), activeID());
    if (list().size() == before.size())
        co_return;
    for (const Account& account : before) {
        const QString id = account.id;
        if (!knows(id)) // a sign-in may have added it again
            co_await m_oauth.removeTokens(id);
    }
    saveAccountsRegistry();
}

QCoro::Task<QString> Accounts::takeToken() {
    if (activeID() && !usesTokensOfActive()) {
        const QString id = *activeID();
        const OAuthManager::StillWanted wanted = [this, id] {
            return activeID() == id && !usesTokensOfActive();
        };
        co_await m_oauth.loadTokens(id, wanted);
    }
    co_return usesTokensOfActive() ? *m_oauth.accessToken() : QString();
}

QCoro::Task<> Accounts::addAccount() {
    const OperationTexts texts{
        .begin = {}, .failure = QStringLiteral("Login fehlgeschlagen: "), .concernsAccount = true};
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
    ++m_choice; // also where the account is active already: a switch may be waiting
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
    const int choice = ++m_choice; // also where the active account is chosen: another switch may be waiting
    if (accountID == activeID())
        co_return;
    const OAuthManager::StillWanted wanted = [this, choice, accountID] {
        return m_choice == choice && knows(accountID);
    };
    const bool known = knows(accountID);
    const bool found = co_await m_oauth.loadTokens(accountID, wanted);
    if (m_choice != choice || (known && !knows(accountID)))
        co_return; // the user has chosen another account meanwhile, or removed this one
    if (!found) {
        m_report.accountFailed(QStringLiteral("Account-Wechsel fehlgeschlagen: keine Tokens gefunden."));
        co_return;
    }
    set(list(), accountID);
    saveAccountsRegistry();
    m_report.log(QStringLiteral("Account gewechselt."), ActivityLogLevel::info);
    co_await m_loading.refresh();
}

QCoro::Task<> Accounts::removeAccount(QString accountID) {
    const bool wasActive = !activeID() || activeID() == accountID;
    const QCoro::Task<> removing = m_oauth.removeTokens(accountID);
    QList<Account> remaining = list();
    remaining.removeIf([&accountID](const Account& account) { return account.id == accountID; });
    if (!wasActive) {
        set(remaining, activeID());
    } else {
        set(remaining, remaining.isEmpty() ? std::nullopt : std::optional(remaining.first().id));
        m_oauth.clearSession();
        if (remaining.isEmpty())
            m_loading.clear();
    }
    const QPointer<Accounts> guard(
        this); // the keyring may keep the end of the program waiting for its password
    co_await removing;
    if (guard && list().isEmpty()) // otherwise the next start would take them over again
        co_await m_oauth.removeLegacyTokens();
    if (!guard)
        co_return;
    saveAccountsRegistry();
    m_report.log(QStringLiteral("Account entfernt."), ActivityLogLevel::info);
    if (wasActive && activeID() && !usesTokensOfActive())
        m_loading.refresh(); // which takes the tokens of the account that is active now
}

QCoro::Task<> Accounts::migrateLegacyLoginIfNeeded() {
    const OAuthManager::ChooseAccount choose = [this](const AuthResult& legacy) {
        return activateLegacyAccount(legacy);
    };
    std::optional<OAuthManager::SignedIn> signedIn = co_await m_oauth.takeOverLegacyLogin(choose);
    if (!signedIn)
        co_return;
    m_report.log(QStringLiteral("Bestehende Anmeldung migriert."), ActivityLogLevel::info);
    keepLegacy(signedIn->accountID, std::move(signedIn->storing)); // beside the first load
}

QCoro::Task<> Accounts::keepLegacy(QString accountID, QCoro::Task<bool> storing) {
    const QPointer<Accounts> guard(this);
    const bool stored = co_await storing;
    if (!guard)
        co_return;
    saveAccountsRegistry();
    const bool removed = !knows(accountID); // by the user, meanwhile
    if (stored || removed)
        co_await m_oauth.removeLegacyTokens();
}

QCoro::Task<std::optional<QString>> Accounts::activateLegacyAccount(AuthResult legacy) {
    std::optional<UserProfile> profile;
    try {
        const QString token = legacy.accessToken;
        const ApplicationsResponse response = co_await m_api.fetchApplications(token);
        profile = response.user;
    } catch (const Failure&) {
        // The refresh that follows reports the failure, and renews an expired token.
    }
    if (!list().isEmpty())
        co_return std::nullopt; // a sign-in was faster
    if (profile)
        m_loading.setUserProfile(profile);
    const std::optional<QString> name = profile ? std::optional(profile->name) : std::nullopt;
    const QString id = legacy.accountID ? *legacy.accountID
                       : name           ? QStringLiteral("name:") + *name
                                        : QStringLiteral("legacy");
    set({{id, legacy.email, displayNameFor(legacy.displayName, name, legacy.email, id)}}, id);
    co_return id;
}
