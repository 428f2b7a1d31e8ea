#pragma once

#include "SignIn/Keychain/KeychainStore.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <optional>

/// A token pair as it is used and stored.
struct Tokens {
    QString accessToken;
    std::optional<QString> refreshToken;
};

/// Loads, saves and removes the accounts' token pairs in the keyring. Keyring calls run on a worker thread,
/// because a locked keyring blocks until the user has typed its password; after the time limit the call
/// counts as failed. Never throws. Main thread.
class TokenStore {
  public:
    /// `keychain` must outlive this and all running operations.
    TokenStore(KeychainStore& keychain, std::chrono::milliseconds limit);

    /// Nothing when there is no access token to be found; a locked keyring shows none.
    QCoro::Task<std::optional<Tokens>> load(QString accountID);
    /// Yields whether both are stored. A pair without a refresh token leaves the stored one as it is.
    QCoro::Task<bool> save(Tokens tokens, QString accountID);
    QCoro::Task<> remove(QString accountID);

    /// The tokens of the older layout, which knew one account only.
    QCoro::Task<std::optional<Tokens>> loadLegacy();
    QCoro::Task<> removeLegacy();

  private:
    QCoro::Task<std::optional<Tokens>> loadItems(QString accessItem, QString refreshItem);
    QCoro::Task<> removeItems(QString accessItem, QString refreshItem);

    KeychainStore& m_keychain;
    const std::chrono::milliseconds m_limit;
    const QString m_service; ///< of the keyring items
};
