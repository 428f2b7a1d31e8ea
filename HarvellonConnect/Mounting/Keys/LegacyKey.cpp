#include "Mounting/Keys/LegacyKey.h"

#include <QFile>

void removeLegacyKeyPair(const QString& homeFolder) {
    const QString privateKey = homeFolder + QStringLiteral("/.ssh/harvellonconnect_ed25519");
    for (const QString& path : {privateKey, privateKey + QStringLiteral(".pub")})
        QFile::remove(path); // the private key first; a missing or protected file is no error
}
