#pragma once

#include <QString>

/// A text without regard to case, as Unicode has it. Qt folds letter by letter, which leaves the sharp s
/// apart from its capital form "SS".
inline QString caseFolded(const QString& text) {
    return text.toCaseFolded().replace(QChar(0xdf), QStringLiteral("ss"));
}
