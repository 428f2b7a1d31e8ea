#include "Updates/SignedFeed.h"

#include <openssl/evp.h>

#include <memory>

namespace {
const unsigned char* bytes(const QByteArray& data) {
    return reinterpret_cast<const unsigned char*>(data.constData());
}

bool isSignature(const QByteArray& signature, const QByteArray& text, const QByteArray& publicKey) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes(publicKey), size_t(publicKey.size())),
        &EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytes(signature), size_t(signature.size()), bytes(text),
                            size_t(text.size())) == 1;
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
