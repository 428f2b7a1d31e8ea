#include "SignIn/Keychain/KeychainStore.h"

#include "System/Logging.h"

#include <QCryptographicHash>
#include <QMutexLocker>

namespace {
/// The item of the keyring that tells which value of the file is outdated.
QString outdatedItemOf(const QString& account) {
    return account + QStringLiteral("-outdated");
}

QByteArray digestOf(const QByteArray& data) {
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex();
}
} // namespace

KeychainStore::KeychainStore(const HostSystem& host)
    : m_usesKeyring(host.usesKeyring), m_file(host.privateFolder + QStringLiteral("/tokens.json")) {}

bool KeychainStore::save(const QByteArray& data, const QString& service, const QString& account) {
    const QMutexLocker lock(&m_mutex);
    Status status;
    // The file wins over the keyring, so what it holds is never the older one, even if the program is killed.
    bool saved = m_file.load(service, account) && m_file.save(data, service, account);
    if (m_usesKeyring)
        status = nativeSave(data, service, account);
    if (status.answer == Answer::done) {
        saved = true;
        leaveFile(service, account);
    } else if (status.answer == Answer::unavailable) {
        warnOnce();
        saved = saved || m_file.save(data, service, account);
    }
    qCInfo(lcKeychain).noquote().nospace()
        << "store(" << service << "/" << account
        << "): " << (saved ? QStringLiteral("success") : QStringLiteral("failed (%1)").arg(status.code));
    return saved;
}

std::optional<QByteArray> KeychainStore::load(const QString& service, const QString& account) {
    const QMutexLocker lock(&m_mutex);
    // The file first: an item is there only when it was saved while no keyring answered, so it is newer than
    // what the keyring may still hold. Using an outdated refresh token would end the whole login.
    if (std::optional<QByteArray> stored = m_file.load(service, account)) {
        const std::optional<bool> outdated = isOutdated({service, account, *stored});
        if (!outdated)
            return std::nullopt;
        if (!*outdated)
            return stored;
    }
    if (!m_usesKeyring)
        return std::nullopt;
    QByteArray data;
    const Status status = nativeLoad(data, service, account);
    if (status.answer == Answer::unavailable)
        warnOnce();
    return status.answer == Answer::done ? std::optional(data) : std::nullopt;
}

bool KeychainStore::remove(const QString& service, const QString& account) {
    const QMutexLocker lock(&m_mutex);
    const bool fileClean = leaveFile(service, account);
    if (!m_usesKeyring)
        return fileClean;
    const Status status = nativeRemove(service, account);
    return fileClean && status.answer != Answer::refused;
}

bool KeychainStore::leaveFile(const QString& service, const QString& account) {
    if (m_file.remove(service, account))
        return true;
    const std::optional<QByteArray> left = m_file.load(service, account);
    if (!left || !m_usesKeyring)
        return false;
    // The disk is full or read-only, and the file would win over the keyring at the next start.
    if (!noteOutdated({service, account, *left}))
        return false;
    // The file as a whole can go even so, once the keyring has the rest of it.
    const QList<SecretFile::Item> items = m_file.items();
    for (const SecretFile::Item& item : items) {
        const std::optional<bool> outdated = isOutdated(item);
        if (!outdated ||
            (!*outdated && nativeSave(item.data, item.service, item.account).answer != Answer::done))
            return true;
    }
    if (m_file.removeAll())
        return true;
    qCWarning(lcKeychain) << "a file with outdated tokens cannot be removed"; // a read-only disk
    for (const SecretFile::Item& item : items)
        noteOutdated(item);
    return true;
}

bool KeychainStore::noteOutdated(const SecretFile::Item& item) {
    return nativeSave(digestOf(item.data), item.service, outdatedItemOf(item.account)).answer == Answer::done;
}

std::optional<bool> KeychainStore::isOutdated(const SecretFile::Item& item) {
    if (!m_usesKeyring)
        return false;
    QByteArray digest;
    const Answer answer = nativeLoad(digest, item.service, outdatedItemOf(item.account)).answer;
    if (answer == Answer::refused)
        return std::nullopt;
    return answer == Answer::done && digest == digestOf(item.data);
}

void KeychainStore::warnOnce() {
    if (m_warned || !m_usesKeyring)
        return;
    m_warned = true;
    qCWarning(lcKeychain) << "no keyring answers; tokens are kept in a file that only this user can read";
}
