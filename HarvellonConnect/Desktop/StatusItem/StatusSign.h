#pragma once

#include <QIcon>
#include <QStringList>

/// What the status item tells of, as the state has it.
struct StatusFacts {
    qsizetype mounted = 0;  ///< projects
    QStringList connecting; ///< domains
    QStringList lost;       ///< domains whose mount has ended by itself and has not been dealt with
    bool signInFailed = false;
};

/// What the status item shows and says. The pictures differ in form alone, because a menu bar may paint them
/// in one colour of its own.
struct StatusSign {
    enum class Picture {
        plain,      ///< nothing is mounted, and nothing is wrong
        mounted,    ///< with a dot
        connecting, ///< with a ring
        trouble     ///< an exclamation mark in the place of the right end
    };

    Picture picture = Picture::plain;
    QString text; ///< German; what the user should know first

    bool operator==(const StatusSign&) const = default;
};

[[nodiscard]] StatusSign statusSign(const StatusFacts& facts);

/// The picture in all sizes that bars ask for.
[[nodiscard]] QIcon statusIcon(StatusSign::Picture picture);
