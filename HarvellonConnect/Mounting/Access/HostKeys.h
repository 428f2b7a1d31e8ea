#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// Lines of lists of known hosts. Any thread.

/// A server's key in such a line.
struct HostKey {
    QString type;        ///< "ED25519"
    QString fingerprint; ///< "SHA256:…", as ssh prints it

    bool operator==(const HostKey&) const = default;
};

/// The keys in `lines`. Comments, broken lines and those with a marker (authorities, revoked keys) are left
/// out.
[[nodiscard]] QList<HostKey> hostKeysIn(const QByteArray& lines);

/// The line that holds `key`, without its end; empty where there is none.
[[nodiscard]] QByteArray lineWith(const HostKey& key, const QByteArray& lines);

/// "ED25519 SHA256:…", one to a line.
[[nodiscard]] QString readable(const QList<HostKey>& keys);
