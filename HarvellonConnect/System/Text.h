#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

#include <algorithm>
#include <optional>
#include <string>

/// `bytes` as text; nothing when they are not valid UTF-8. QString::fromUtf8 would replace invalid bytes.
[[nodiscard]] inline std::optional<QString> strictUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// The text of the first `size` bytes; a character that is cut in two is left out. Nothing when they are not
/// valid UTF-8.
[[nodiscard]] inline std::optional<QString> beginningOf(const QByteArray& bytes, qsizetype size) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes.left(size));
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// The text for a log: a terminal would obey its control characters, and a line break would forge a line of
/// our own.
[[nodiscard]] inline QString printable(const QString& text) {
    std::u32string characters = text.toStdU32String(); // half of a surrogate pair counts as not printable
    std::replace_if(
        characters.begin(), characters.end(), [](char32_t character) { return !QChar::isPrint(character); },
        char32_t(QChar::ReplacementCharacter));
    return QString::fromStdU32String(characters);
}
