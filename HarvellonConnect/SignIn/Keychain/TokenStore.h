#pragma once

#include "SignIn/Keychain/KeychainStore.h"

#include <QCoroTask>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

/// A token pair as it is used and stored.
struct Tokens {
    QString accessToken;
    std::optional<QString> refreshToken;
};

/// Owns the newest token pair of each account: stored in the keyring or, where it could not be stored, kept
/// here.
///
/// Keyring calls run on a worker thread, because a locked keyring blocks until the user has typed its
/// password, and one after the other, so that of two saves the later one stays. After the time limit a call
/// counts as failed, but it goes on. Never throws. Main thread.
class TokenStore : public QObject {
    Q_OBJECT

  public:
    TokenStore(std::shared_ptr<KeychainStore> keychain, std::chrono::milliseconds limit);

    /// Changes with each `save` and `remove` for the account, at once. Whoever waits for something that
    /// concerns a pair compares it afterwards: a newer pair must not be overwritten or deleted.
    [[nodiscard]] quint64 version(const QString& accountID) const { return m_versions.value(accountID); }

    /// The newest pair, also where it is saved during the wait. Nothing when there is no access token to be
    /// found; a locked keyring shows none.
    QCoro::Task<std::optional<Tokens>> load(QString accountID);
    /// Yields whether both are stored. A pair without a refresh token leaves the stored one as it is.
    QCoro::Task<bool> save(Tokens tokens, QString accountID);
    QCoro::Task<> remove(QString accountID);

    /// Tries again to store the pairs that could not be stored.
    QCoro::Task<> storeUnsaved();

    /// The tokens of the older layout, which knew one account only.
    QCoro::Task<std::optional<Tokens>> loadLegacy();
    QCoro::Task<> removeLegacy();

  Q_SIGNALS:
    /// Every pair is stored now.
    void allStored();

  private:
    struct Unsaved {
        Tokens tokens;
        bool onItsWay = false; ///< to the keyring
    };

    QCoro::Task<bool> store(QString accountID);
    void endStoring(const QString& accountID, quint64 version, bool stored);
    QCoro::Task<std::optional<Tokens>> loadItems(QString accessItem, QString refreshItem);
    QCoro::Task<> removeItems(QString accessItem, QString refreshItem);

    const std::shared_ptr<KeychainStore> m_keychain; ///< shared with the calls, which may outlive this
    const std::chrono::milliseconds m_limit;
    const QString m_service; ///< of the keyring items
    QHash<QString, quint64> m_versions;
    QHash<QString, Unsaved> m_unsaved; ///< by account
};
