#include "SignIn/Pkce.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

namespace {
QString base64url(const QByteArray& bytes) {
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}
} // namespace

QString Pkce::randomText(int bytes) {
    QByteArray random(bytes, Qt::Uninitialized);
    QRandomGenerator* const generator = QRandomGenerator::system();
    for (char& byte : random)
        byte = static_cast<char>(generator->generate() & 0xffU);
    return base64url(random);
}

QString Pkce::challenge(const QString& verifier) {
    return base64url(QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256));
}
