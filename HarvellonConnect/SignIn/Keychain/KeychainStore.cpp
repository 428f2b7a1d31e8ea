#include "SignIn/Keychain/KeychainStore.h"

#include "System/Logging.h"

#include <QMutexLocker>

KeychainStore::KeychainStore(const HostSystem& host)
    : m_usesKeyring(host.usesKeyring), m_file(host.privateFolder + QStringLiteral("/tokens.json")) {}

bool KeychainStore::save(const QByteArray& data, const QString& service, const QString& account) {
    const QMutexLocker lock(&m_mutex);
    Status status;
    if (m_usesKeyring)
        status = nativeSave(data, service, account);
    bool saved = status.answer == Answer::done;
    if (saved) {
        leaveFile(service, account); // the keyring has come back: its item is the newer one now
    } else if (status.answer == Answer::unavailable) {
        warnOnce();
        saved = m_file.save(data, service, account);
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
    if (std::optional<QByteArray> data = m_file.load(service, account))
        return data;
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
    const bool fileClean = m_file.remove(service, account);
    if (!m_usesKeyring)
        return fileClean;
    const Status status = nativeRemove(service, account);
    return fileClean && status.answer != Answer::refused;
}

void KeychainStore::leaveFile(const QString& service, const QString& account) {
    if (m_file.remove(service, account))
        return;
    // The disk is full. The file would win over the keyring at the next start, so it goes as a whole.
    const QList<SecretFile::Item> items = m_file.items();
    for (const SecretFile::Item& item : items) {
        const bool same = item.service == service && item.account == account;
        if (!same && nativeSave(item.data, item.service, item.account).answer != Answer::done)
            return;
    }
    if (!m_file.removeAll())
        qCWarning(lcKeychain) << "a file with outdated tokens cannot be removed";
}

void KeychainStore::warnOnce() {
    if (m_warned || !m_usesKeyring)
        return;
    m_warned = true;
    qCWarning(lcKeychain) << "no keyring answers; tokens are kept in a file that only this user can read";
}
