#pragma once

#include "SignIn/Keychain/SecretFile.h"
#include "System/HostSystem.h"

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <optional>

/// One secret for each service and account name, in the desktop's keyring; where there is no keyring, in a
/// file for the user alone. A keyring may ask the user for a password and stands still meanwhile: every
/// operation may block and belongs on a worker thread. Failures are return values, never thrown.
class KeychainStore {
  public:
    explicit KeychainStore(const HostSystem& host);
    Q_DISABLE_COPY_MOVE(KeychainStore)

    /// Replaces what was stored under that name.
    bool save(const QByteArray& data, const QString& service, const QString& account);
    /// Nothing when it is absent, and also while the keyring is locked: absence is no proof.
    [[nodiscard]] std::optional<QByteArray> load(const QString& service, const QString& account);
    /// True as well when there was nothing to remove.
    bool remove(const QString& service, const QString& account);

  private:
    /// The keyring's answer. `unavailable`: there is no keyring to ask, at least not now.
    enum class Answer { done, absent, refused, unavailable };

    struct Status {
        Answer answer = Answer::unavailable;
        int code = 0; ///< the system's own, for the log
    };

    static Status nativeSave(const QByteArray& data, const QString& service, const QString& account);
    static Status nativeLoad(QByteArray& data, const QString& service, const QString& account);
    static Status nativeRemove(const QString& service, const QString& account);

    /// Takes an item out of the file. Where the file cannot be changed, the keyring keeps in mind that its
    /// items are outdated. Says whether the item counts no more.
    bool leaveFile(const QString& service, const QString& account);
    static bool noteOutdated(const SecretFile::Item& item);
    /// Nothing while the keyring is locked.
    std::optional<bool> isOutdated(const SecretFile::Item& item);
    void warnOnce();

    const bool m_usesKeyring;
    QMutex m_mutex; ///< one operation at a time: a save must not overtake an earlier one
    SecretFile m_file;
    bool m_warned = false;
};
