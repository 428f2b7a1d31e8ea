#include "SignIn/Keychain/TokenStore.h"

#include "System/Async.h"
#include "System/Logging.h"
#include "System/Text.h"

namespace {
const QString legacyAccessItem = QStringLiteral("access-token");
const QString legacyRefreshItem = QStringLiteral("refresh-token");

QString accessItemOf(const QString& accountID) {
    return accountID + QStringLiteral("-access-token");
}

QString refreshItemOf(const QString& accountID) {
    return accountID + QStringLiteral("-refresh-token");
}

std::optional<QString> text(const std::optional<QByteArray>& data) {
    return data && !data->isEmpty() ? strictUtf8(*data) : std::nullopt;
}
} // namespace

TokenStore::TokenStore(KeychainStore& keychain, std::chrono::milliseconds limit)
    : m_keychain(keychain), m_limit(limit), m_service(applicationIdentifier + QLatin1StringView(".oauth")) {}

QCoro::Task<std::optional<Tokens>> TokenStore::load(QString accountID) {
    return loadItems(accessItemOf(accountID), refreshItemOf(accountID));
}

QCoro::Task<std::optional<Tokens>> TokenStore::loadLegacy() {
    return loadItems(legacyAccessItem, legacyRefreshItem);
}

QCoro::Task<> TokenStore::remove(QString accountID) {
    return removeItems(accessItemOf(accountID), refreshItemOf(accountID));
}

QCoro::Task<> TokenStore::removeLegacy() {
    return removeItems(legacyAccessItem, legacyRefreshItem);
}

QCoro::Task<std::optional<Tokens>> TokenStore::loadItems(QString accessItem, QString refreshItem) {
    using Loaded = std::optional<Tokens>;
    const std::function<Loaded()> work = [&keychain = m_keychain, service = m_service, accessItem,
                                          refreshItem]() -> Loaded {
        const std::optional<QString> access = text(keychain.load(service, accessItem));
        if (!access)
            return std::nullopt; // asking a locked keyring once more would open its dialog a second time
        return Tokens{*access, text(keychain.load(service, refreshItem))};
    };
    const std::optional<Loaded> loaded = co_await Async::onWorker(work, m_limit);
    co_return loaded.value_or(std::nullopt);
}

QCoro::Task<bool> TokenStore::save(Tokens tokens, QString accountID) {
    const std::function<bool()> work = [&keychain = m_keychain, service = m_service, tokens, accountID] {
        // The refresh token first: if the program ends between the two, an outdated access token is merely
        // renewed, while an outdated refresh token would end the login.
        const bool refreshSaved = !tokens.refreshToken || keychain.save(tokens.refreshToken->toUtf8(),
                                                                        service, refreshItemOf(accountID));
        return keychain.save(tokens.accessToken.toUtf8(), service, accessItemOf(accountID)) && refreshSaved;
    };
    const std::optional<bool> saved = co_await Async::onWorker(work, m_limit);
    co_return saved.value_or(false);
}

QCoro::Task<> TokenStore::removeItems(QString accessItem, QString refreshItem) {
    const std::function<bool()> work = [&keychain = m_keychain, service = m_service, accessItem,
                                        refreshItem] {
        const bool accessGone = keychain.remove(service, accessItem);
        return keychain.remove(service, refreshItem) && accessGone;
    };
    co_await Async::onWorker(work, m_limit);
}
