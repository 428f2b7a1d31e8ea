#include "State/AccountRules.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace {
QString key(const std::optional<QString>& email) {
    // Lower case, not case folding: "straße" and "strasse" are two people.
    return email.value_or(QString()).toLower();
}
} // namespace

std::optional<Account> knownAccount(const QList<Account>& accounts, const QString& id,
                                    const std::optional<QString>& email) {
    for (const Account& account : accounts) {
        if (account.id == id)
            return account;
    }
    for (const Account& account : accounts) {
        if (!key(email).isEmpty() && key(account.email) == key(email))
            return account;
    }
    return std::nullopt;
}

QString displayNameFor(const std::optional<QString>& signInName, const std::optional<QString>& profileName,
                       const std::optional<QString>& email, const QString& id) {
    for (const std::optional<QString>& name : {signInName, profileName, email}) {
        if (name && !name->isEmpty())
            return *name;
    }
    return id;
}

QList<Account> withAccount(QList<Account> accounts, const Account& account) {
    const auto known = std::find_if(accounts.begin(), accounts.end(),
                                    [&account](const Account& other) { return other.id == account.id; });
    if (known == accounts.end())
        accounts.append(account);
    else
        *known = account;
    return accounts;
}

QList<Account> withoutDuplicates(const QList<Account>& accounts, const std::optional<QString>& activeID) {
    QHash<QString, QString> keeper; // e-mail to the id that stays
    for (const Account& account : accounts) {
        const QString email = key(account.email);
        if (!email.isEmpty() && (!keeper.contains(email) || account.id == activeID))
            keeper.insert(email, account.id);
    }
    QList<Account> kept;
    QSet<QString> keptIDs;
    for (const Account& account : accounts) {
        const QString email = key(account.email);
        if (keptIDs.contains(account.id) || (!email.isEmpty() && keeper.value(email) != account.id))
            continue;
        keptIDs.insert(account.id);
        kept.append(account);
    }
    return kept;
}
