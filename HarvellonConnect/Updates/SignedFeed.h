#pragma once

#include <QByteArray>

#include <optional>

/// What a feed says above its last line, where that line is `<!-- signature BASE64 -->` with the Ed25519
/// signature of everything above it. One file, so that no answer can mix an old feed with a new signature; a
/// comment, so that every other reader of feeds takes it as well. Nothing where the line is missing or was
/// not made with `publicKey` (32 bytes). Any thread.
[[nodiscard]] std::optional<QByteArray> signedPart(const QByteArray& feed, const QByteArray& publicKey);
