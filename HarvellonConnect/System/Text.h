#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

#include <optional>

/// `bytes` as text; nothing when they are not valid UTF-8. QString::fromUtf8 would replace invalid bytes.
[[nodiscard]] inline std::optional<QString> strictUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}
