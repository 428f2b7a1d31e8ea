#include "SignIn/OAuthManager.h"
#include "System/Async.h"
#include "System/Logging.h"
#include "System/Text.h"

namespace {
/// A keyring may wait for the user's password; longer than a login takes nobody waits for it.
constexpr std::chrono::seconds keyringPatience{120};

const QString legacyAccessItem = QStringLiteral("access-token");
const QString legacyRefreshItem = QStringLiteral("refresh-token");

QString accessItem(const QString& accountID) {
    return accountID + QStringLiteral("-access-token");
}

QString refreshItem(const QString& accountID) {
    return accountID + QStringLiteral("-refresh-token");
}

std::optional<QString> text(const std::optional<QByteArray>& data) {
    return data && !data->isEmpty() ? strictUtf8(*data) : std::nullopt;
}
} // namespace

QCoro::Task<OAuthManager::Stored> OAuthManager::load(QString access, QString refresh) {
    const std::function<Stored()> work = [&keychain = m_keychain, service = m_service, access, refresh] {
        Stored stored;
        stored.access = keychain.load(service, access);
        if (stored.access) // else a locked keyring would ask its question a second time
            stored.refresh = keychain.load(service, refresh);
        return stored;
    };
    const std::optional<Stored> stored = co_await Async::onWorker(work, keyringPatience);
    co_return stored.value_or(Stored{});
}

QCoro::Task<> OAuthManager::remove(QString access, QString refresh) {
    const std::function<bool()> work = [&keychain = m_keychain, service = m_service, access, refresh] {
        const bool accessGone = keychain.remove(service, access);
        return keychain.remove(service, refresh) && accessGone;
    };
    const Unfinished unfinished(this);
    co_await Async::onWorker(work, keyringPatience);
}

QCoro::Task<bool> OAuthManager::store(QString accessToken, std::optional<QString> refreshToken,
                                      QString accountID) {
    const std::function<bool()> work = [&keychain = m_keychain, service = m_service, accessToken,
                                        refreshToken, accountID] {
        // The refresh token first: should the program end between the two, an outdated access token is merely
        // renewed, while an outdated refresh token would end the login.
        const bool refreshSaved =
            !refreshToken || keychain.save(refreshToken->toUtf8(), service, refreshItem(accountID));
        return keychain.save(accessToken.toUtf8(), service, accessItem(accountID)) && refreshSaved;
    };
    const Unfinished unfinished(this);
    const std::optional<bool> answer = co_await Async::onWorker(work, keyringPatience);
    const bool stored = answer.value_or(false);
    if (!stored)
        Q_EMIT storingFailed();
    co_return stored;
}

QCoro::Task<bool> OAuthManager::loadTokens(QString accountID) {
    const QString access = accessItem(accountID);
    const QString refresh = refreshItem(accountID);
    const Stored stored = co_await load(access, refresh);
    const std::optional<QString> accessToken = text(stored.access);
    if (!accessToken)
        co_return false;
    use(accessToken, text(stored.refresh), accountID);
    qCInfo(lcOAuth) << "OAuth-Tokens fuer Account geladen.";
    co_return true;
}

QCoro::Task<bool> OAuthManager::saveTokens(QString accessToken, std::optional<QString> refreshToken,
                                           QString accountID) {
    // In use at once: a keyring that waits for a password must not hold up the session.
    use(accessToken, refreshToken, accountID);
    co_return co_await store(accessToken, refreshToken, accountID);
}

QCoro::Task<> OAuthManager::removeTokens(QString accountID) {
    if (m_activeAccountID == accountID)
        clearSession();
    const QString access = accessItem(accountID);
    const QString refresh = refreshItem(accountID);
    co_await remove(access, refresh);
}

void OAuthManager::clearSession() {
    use(std::nullopt, std::nullopt, std::nullopt);
    setAuthError(std::nullopt);
}

QCoro::Task<std::optional<OAuthManager::Tokens>> OAuthManager::loadLegacyTokens() {
    const Stored stored = co_await load(legacyAccessItem, legacyRefreshItem);
    const std::optional<QString> accessToken = text(stored.access);
    if (!accessToken)
        co_return std::nullopt;
    co_return Tokens{*accessToken, text(stored.refresh)};
}

QCoro::Task<> OAuthManager::removeLegacyTokens() {
    co_await remove(legacyAccessItem, legacyRefreshItem);
}

void OAuthManager::use(std::optional<QString> accessToken, std::optional<QString> refreshToken,
                       std::optional<QString> accountID) {
    m_refreshToken = std::move(refreshToken);
    m_activeAccountID = std::move(accountID);
    if (m_accessToken == accessToken)
        return;
    m_accessToken = std::move(accessToken);
    Q_EMIT accessTokenChanged();
}
