#include "Mounting/Access/HostKeys.h"

#include <QCryptographicHash>

#include <optional>

namespace {
QString readableType(const QByteArray& type) {
    if (type.contains("ed25519"))
        return QStringLiteral("ED25519");
    if (type.startsWith("ecdsa") || type.startsWith("sk-ecdsa"))
        return QStringLiteral("ECDSA");
    return type == "ssh-rsa" ? QStringLiteral("RSA") : QString::fromLatin1(type);
}

std::optional<HostKey> hostKeyIn(const QByteArray& line) {
    if (line.isEmpty() || line.startsWith('#') || line.startsWith('@'))
        return std::nullopt;
    const QList<QByteArray> words = line.simplified().split(' ');
    if (words.size() < 3)
        return std::nullopt;
    const auto key = QByteArray::fromBase64Encoding(words.at(2), QByteArray::AbortOnBase64DecodingErrors);
    if (!key || (*key).mid(4, words.at(1).size()) != words.at(1))
        return std::nullopt;
    const QByteArray hash = QCryptographicHash::hash(*key, QCryptographicHash::Sha256);
    return HostKey{readableType(words.at(1)),
                   QStringLiteral("SHA256:") +
                       QString::fromLatin1(hash.toBase64(QByteArray::OmitTrailingEquals))};
}
} // namespace

QList<HostKey> hostKeysIn(const QByteArray& lines) {
    QList<HostKey> keys;
    for (const QByteArray& line : lines.split('\n')) {
        if (const std::optional<HostKey> key = hostKeyIn(line))
            keys.append(*key);
    }
    return keys;
}

QByteArray lineWith(const HostKey& key, const QByteArray& lines) {
    for (const QByteArray& line : lines.split('\n')) {
        if (hostKeyIn(line) == key)
            return line;
    }
    return {};
}

QString readable(const QList<HostKey>& keys) {
    QStringList lines;
    for (const HostKey& key : keys)
        lines.append(key.type + QLatin1Char(' ') + key.fingerprint);
    return lines.join(QLatin1Char('\n'));
}
