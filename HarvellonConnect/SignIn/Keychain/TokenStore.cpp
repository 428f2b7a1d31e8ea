#include "SignIn/Keychain/TokenStore.h"

#include "System/Async.h"
#include "System/Logging.h"
#include "System/Text.h"

#include <QPointer>

namespace {
const QString legacyAccessItem = QStringLiteral("access-token");
const QString legacyRefreshItem = QStringLiteral("refresh-token");

QString accessItemOf(const QString& accountID) {
    return accountID + QStringLiteral("-access-token");
}

QString refreshItemOf(const QString& accountID) {
    return accountID + QStringLiteral("-refresh-token");
}

/// A single thread, so that calls run in the order in which they were asked for. Never destroyed: waiting for
/// a thread that waits for the user would keep the program from ending.
QThreadPool& keyringThread() {
    static auto* const pool = [] {
        auto* created = new QThreadPool;
        created->setMaxThreadCount(1);
        return created;
    }();
    return *pool;
}

std::optional<QString> text(const std::optional<QByteArray>& data) {
    return data && !data->isEmpty() ? strictUtf8(*data) : std::nullopt;
}
} // namespace

TokenStore::TokenStore(std::shared_ptr<KeychainStore> keychain, std::chrono::milliseconds limit)
    : m_keychain(std::move(keychain)), m_limit(limit),
      m_service(applicationIdentifier + QLatin1StringView(".oauth")) {}

QCoro::Task<std::optional<Tokens>> TokenStore::load(QString accountID) {
    const QPointer<TokenStore> self(this);
    while (self) {
        if (m_unsaved.contains(accountID))
            co_return m_unsaved.value(accountID).tokens;
        const quint64 asked = version(accountID);
        const QString accessItem = accessItemOf(accountID);
        const QString refreshItem = refreshItemOf(accountID);
        const std::optional<Tokens> loaded = co_await loadItems(accessItem, refreshItem);
        if (self && version(accountID) == asked)
            co_return loaded;
    }
    co_return std::nullopt;
}

QCoro::Task<std::optional<Tokens>> TokenStore::loadLegacy() {
    return loadItems(legacyAccessItem, legacyRefreshItem);
}

QCoro::Task<> TokenStore::remove(QString accountID) {
    ++m_versions[accountID];
    m_unsaved.remove(accountID);
    return removeItems(accessItemOf(accountID), refreshItemOf(accountID));
}

QCoro::Task<> TokenStore::removeLegacy() {
    return removeItems(legacyAccessItem, legacyRefreshItem);
}

QCoro::Task<std::optional<Tokens>> TokenStore::loadItems(QString accessItem, QString refreshItem) {
    using Loaded = std::optional<Tokens>;
    const std::function<Loaded()> work = [keychain = m_keychain, service = m_service, accessItem,
                                          refreshItem]() -> Loaded {
        const std::optional<QString> access = text(keychain->load(service, accessItem));
        if (!access)
            return std::nullopt; // asking a locked keyring once more would open its dialog a second time
        return Tokens{*access, text(keychain->load(service, refreshItem))};
    };
    const std::optional<Loaded> loaded = co_await Async::onWorker(work, m_limit, keyringThread());
    co_return loaded.value_or(std::nullopt);
}

QCoro::Task<bool> TokenStore::save(Tokens tokens, QString accountID) {
    ++m_versions[accountID];
    m_unsaved.insert(accountID, {tokens});
    return store(accountID);
}

QCoro::Task<> TokenStore::storeUnsaved() {
    const QPointer<TokenStore> self(this);
    const QStringList accountIDs = m_unsaved.keys();
    for (const QString& accountID : accountIDs) {
        if (self && m_unsaved.contains(accountID) && !m_unsaved.value(accountID).onItsWay)
            co_await store(accountID);
    }
}

QCoro::Task<bool> TokenStore::store(QString accountID) {
    const QPointer<TokenStore> self(this);
    const quint64 stored = version(accountID);
    m_unsaved[accountID].onItsWay = true;
    const Tokens tokens = m_unsaved.value(accountID).tokens;
    const std::function<bool()> work = [keychain = m_keychain, service = m_service, tokens, accountID] {
        // The refresh token first: if the program ends between the two, an outdated access token is merely
        // renewed, while an outdated refresh token would end the login.
        const bool refreshSaved = !tokens.refreshToken || keychain->save(tokens.refreshToken->toUtf8(),
                                                                         service, refreshItemOf(accountID));
        return keychain->save(tokens.accessToken.toUtf8(), service, accessItemOf(accountID)) && refreshSaved;
    };
    QFuture<bool> saved = QtConcurrent::run(&keyringThread(), work);
    // The call may end long after the time limit: the user types the password at last.
    auto* const watcher = new QFutureWatcher<bool>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, accountID, stored] {
        watcher->deleteLater();
        endStoring(accountID, stored, watcher->result());
    });
    watcher->setFuture(saved);
    const bool finished = co_await Async::finishesWithin(saved, m_limit);
    if (self && finished)
        endStoring(accountID, stored,
                   saved.result()); // before the caller tries again; the watcher may be later
    co_return finished&& saved.result();
}

void TokenStore::endStoring(const QString& accountID, quint64 version, bool stored) {
    const auto unsaved = m_unsaved.find(accountID);
    if (unsaved == m_unsaved.end() || m_versions.value(accountID) != version)
        return; // there are newer tokens, or none
    if (!stored) {
        unsaved->onItsWay = false;
        return;
    }
    m_unsaved.erase(unsaved);
    if (m_unsaved.isEmpty())
        Q_EMIT allStored();
}

QCoro::Task<> TokenStore::removeItems(QString accessItem, QString refreshItem) {
    const std::function<bool()> work = [keychain = m_keychain, service = m_service, accessItem, refreshItem] {
        const bool accessGone = keychain->remove(service, accessItem);
        return keychain->remove(service, refreshItem) && accessGone;
    };
    co_await Async::onWorker(work, m_limit, keyringThread());
}
