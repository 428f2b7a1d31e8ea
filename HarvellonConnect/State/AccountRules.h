#pragma once

#include "Directory/Account.h"
#include "SignIn/TokenResponse.h"

#include <QList>
#include <QString>

#include <optional>

/// The known account that a sign-in belongs to: by id, failing that by e-mail without regard to case.
std::optional<Account> knownAccount(const QList<Account>& accounts, const QString& id,
                                    const std::optional<QString>& email);

/// The display name of an account: the name from the sign-in, else the profile's, the e-mail, the id.
QString displayNameFor(const std::optional<QString>& signInName, const std::optional<QString>& profileName,
                       const std::optional<QString>& email, const QString& id);

/// Puts an account into the list: in place where its id is known, otherwise at the end.
QList<Account> withAccount(QList<Account> accounts, const Account& account);

/// The list without accounts whose id or e-mail another one has too. Of several, the active one stays, else
/// the first.
QList<Account> withoutDuplicates(const QList<Account>& accounts, const std::optional<QString>& activeID);
