#include "Updates/SignedFeed.h"

#include <sodium.h>

namespace {
const unsigned char* bytes(const QByteArray& data) {
    return reinterpret_cast<const unsigned char*>(data.constData());
}

bool isSignature(const QByteArray& signature, const QByteArray& text, const QByteArray& publicKey) {
    return publicKey.size() == crypto_sign_PUBLICKEYBYTES && signature.size() == crypto_sign_BYTES &&
           sodium_init() >= 0 &&
           crypto_sign_verify_detached(bytes(signature), bytes(text), size_t(text.size()),
                                       bytes(publicKey)) == 0;
}
} // namespace

std::optional<QByteArray> signedPart(const QByteArray& feed, const QByteArray& publicKey) {
    static const QByteArray before("<!-- signature ");
    static const QByteArray after(" -->\n");
    const qsizetype start = feed.lastIndexOf('\n', -2) + 1;
    const QByteArray line = feed.mid(start);
    if (!line.startsWith(before) || !line.endsWith(after))
        return std::nullopt;
    const auto signature =
        QByteArray::fromBase64Encoding(line.mid(before.size(), line.size() - before.size() - after.size()),
                                       QByteArray::AbortOnBase64DecodingErrors);
    const QByteArray text = feed.left(start);
    if (!signature || !isSignature(*signature, text, publicKey))
        return std::nullopt;
    return text;
}
