#include "System/Ssh/SocketFolder.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr qsizetype longestPath = 103;    // bytes of a socket's address on macOS; Linux has four more
constexpr qsizetype temporarySuffix = 17; // ssh makes the socket under a longer name and renames it
constexpr qsizetype nameLength = 16;

bool belongsToUser(int folder, mode_t forbidden) {
    struct stat status {};

    return ::fstat(folder, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & forbidden) == 0;
}

bool isPlain(QChar character) {
    return character.isLetterOrNumber() || QStringLiteral("/._-+").contains(character);
}
} // namespace

bool makeSocketFolder(const QString& folder) {
    const QFileInfo path(folder);
    const QByteArray name = QFile::encodeName(path.fileName());
    const int parent =
        ::open(QFile::encodeName(path.absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (parent < 0)
        return false;
    bool ours = belongsToUser(parent, S_IWGRP | S_IWOTH);
    if (ours) {
        ::mkdirat(parent, name.constData(), S_IRWXU);
        const int made = ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        ours = made >= 0 && belongsToUser(made, S_IRWXG | S_IRWXO);
        if (made >= 0)
            ::close(made);
    }
    ::close(parent);
    return ours;
}

std::optional<QString> socketPath(const QString& folder, const QString& name) {
    const QByteArray hash = QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex();
    const QString path = folder + QLatin1Char('/') + QString::fromLatin1(hash.left(nameLength));
    if (!std::all_of(path.begin(), path.end(), isPlain) ||
        QFile::encodeName(path).size() + temporarySuffix > longestPath)
        return std::nullopt;
    return path;
}
