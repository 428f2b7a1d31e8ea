#include "System/Requests/RequestSocket.h"

#include "System/Files/PrivateFolder.h"
#include "System/HostSystem.h"

#include <QCryptographicHash>

namespace {
constexpr qsizetype nameLength = 16; // a socket has a short path
}

std::optional<QString> requestSocket(const HostSystem& host) {
    if (!makePrivateFolder(host.socketFolder))
        return std::nullopt;
    // One for each home folder.
    const QByteArray hash =
        QCryptographicHash::hash(host.privateFolder.toUtf8(), QCryptographicHash::Sha256).toHex();
    return host.socketFolder + QLatin1Char('/') + QString::fromLatin1(hash.left(nameLength));
}
