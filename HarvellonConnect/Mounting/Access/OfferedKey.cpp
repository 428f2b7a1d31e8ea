#include "Mounting/Access/OfferedKey.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {
constexpr qint64 mostBytes = 16 * 1024;

QString expanded(QString path, const QString& home) {
    if (path.size() > 1 && path.startsWith(QLatin1Char('"')) && path.endsWith(QLatin1Char('"')))
        path = path.mid(1, path.size() - 2);
    if (path.startsWith(QLatin1String("~/")))
        path = home + path.mid(1);
    QStringList parts = path.split(QStringLiteral("%%"));
    for (QString& part : parts)
        part.replace(QLatin1String("%d"), home);
    return parts.join(QLatin1Char('%'));
}

bool isKeyType(const QString& word) {
    return word.startsWith(QLatin1String("ssh-")) || word.startsWith(QLatin1String("ecdsa-sha2-")) ||
           word.startsWith(QLatin1String("sk-"));
}
} // namespace

SshSettings SshSettings::read(const QString& text, const QString& home) {
    SshSettings settings;
    QString host;
    QString port;
    QString alias;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const QString key = line.section(QLatin1Char(' '), 0, 0).toLower();
        const QString value = line.section(QLatin1Char(' '), 1).trimmed();
        if (key == QLatin1String("identityfile") && value != QLatin1String("none"))
            settings.identityFiles.append(expanded(value, home));
        else if (key == QLatin1String("identitiesonly"))
            settings.identitiesOnly = value == QLatin1String("yes");
        else if (key == QLatin1String("identityagent") && value != QLatin1String("SSH_AUTH_SOCK"))
            settings.agent = expanded(value, home);
        else if (key == QLatin1String("hostname"))
            host = value.toLower();
        else if (key == QLatin1String("port"))
            port = value;
        else if (key == QLatin1String("hostkeyalias"))
            alias = value;
    }
    settings.knownName =
        port.isEmpty() || port == QLatin1String("22") ? host : QStringLiteral("[%1]:%2").arg(host, port);
    if (!alias.isEmpty())
        settings.knownName = alias;
    return settings;
}

std::optional<PublicKey> publicKeyIn(const QByteArray& content, const QString& source) {
    const QString line = QString::fromUtf8(content).trimmed();
    const QStringList words = line.split(QLatin1Char(' '));
    if (line.contains(QLatin1Char('\n')) || words.size() < 2 || !isKeyType(words.first()))
        return std::nullopt;
    const auto key =
        QByteArray::fromBase64Encoding(words.at(1).toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    // The encoded key begins with its own type: a name of four bytes of length and the same word.
    if (!key || QString::fromLatin1((*key).mid(4, words.first().size())) != words.first())
        return std::nullopt;
    return PublicKey{line, source};
}

QList<PublicKey> publicKeysBeside(const QStringList& identityFiles) {
    QList<PublicKey> keys;
    for (const QString& path : identityFiles) {
        for (const QString& candidate : {path + QStringLiteral(".pub"), path}) {
            QFile file(candidate);
            if (!QFileInfo(candidate).isFile() || !file.open(QIODevice::ReadOnly))
                continue;
            if (const std::optional<PublicKey> key = publicKeyIn(file.read(mostBytes), candidate)) {
                keys.append(*key);
                break;
            }
        }
    }
    return keys;
}

QStringList withoutPublicHalf(const QStringList& identityFiles) {
    QStringList files;
    for (const QString& path : identityFiles) {
        if (QFileInfo(path).isFile() && publicKeysBeside({path}).isEmpty())
            files.append(path);
    }
    return files;
}

std::optional<PublicKey> firstOffered(const SshSettings& settings, const QList<PublicKey>& fileKeys,
                                      const QByteArray& agentKeys) {
    std::optional<PublicKey> agentsOwn;
    for (const QByteArray& line : agentKeys.split('\n')) {
        const std::optional<PublicKey> key = publicKeyIn(line);
        if (!key)
            continue;
        const auto same = std::find_if(fileKeys.begin(), fileKeys.end(), [&key](const PublicKey& file) {
            return file.identity() == key->identity();
        });
        if (same != fileKeys.end())
            return *same;
        if (!agentsOwn)
            agentsOwn = key;
    }
    if (agentsOwn && !settings.identitiesOnly)
        return agentsOwn;
    return fileKeys.isEmpty() ? std::nullopt : std::optional(fileKeys.first());
}

std::optional<QString> placeForNewKey(const QStringList& identityFiles) {
    for (const QString& path : identityFiles) {
        if (path.endsWith(QLatin1String("/.ssh/id_ed25519")))
            return path;
    }
    return identityFiles.isEmpty() ? std::nullopt : std::optional(identityFiles.first());
}
