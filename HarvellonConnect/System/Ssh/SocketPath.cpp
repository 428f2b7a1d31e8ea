#include "System/Ssh/SocketPath.h"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>

namespace {
constexpr qsizetype longestPath = 103;    // bytes of a socket's address on macOS; Linux has four more
constexpr qsizetype temporarySuffix = 17; // ssh makes the socket under a longer name and renames it
constexpr qsizetype nameLength = 16;

bool isPlain(QChar character) {
    return character.isLetterOrNumber() || QStringLiteral("/._-+").contains(character);
}
} // namespace

std::optional<QString> socketPath(const QString& folder, const QString& name) {
    const QByteArray hash = QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex();
    const QString path = folder + QLatin1Char('/') + QString::fromLatin1(hash.left(nameLength));
    if (!std::all_of(path.begin(), path.end(), isPlain) ||
        QFile::encodeName(path).size() + temporarySuffix > longestPath)
        return std::nullopt;
    return path;
}
