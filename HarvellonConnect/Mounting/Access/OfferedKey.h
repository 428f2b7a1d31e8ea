#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What ssh would do for one login, from the output of `ssh -G`.
struct SshSettings {
    QStringList identityFiles; ///< absolute paths in ssh's order
    bool identitiesOnly = false;
    QString agent;     ///< the socket of a configured agent, "none", or empty for the session's own
    QString knownName; ///< the name by which lists of known hosts name the server

    /// `home`: where `~` leads.
    [[nodiscard]] static SshSettings read(const QString& text, const QString& home);
};

/// A public key, ready to be copied.
struct PublicKey {
    QString line;   ///< "ssh-ed25519 AAAA… comment"
    QString source; ///< the file, or empty where only an agent has the key

    /// The type and the key itself, without the comment.
    [[nodiscard]] QString identity() const { return line.section(QLatin1Char(' '), 0, 1); }
};

/// The public key in `content`: a file with one key, or a line of `ssh-add -L`. Nothing for anything else,
/// private keys above all.
[[nodiscard]] std::optional<PublicKey> publicKeyIn(const QByteArray& content, const QString& source = {});

/// The public keys that lie beside the identity files, in their order. Reads files; any thread.
[[nodiscard]] QList<PublicKey> publicKeysBeside(const QStringList& identityFiles);

/// The identity files that exist but whose public half does not. Reads files; any thread.
[[nodiscard]] QStringList withoutPublicHalf(const QStringList& identityFiles);

/// The key that ssh offers first: one that both an agent and a file have, else the agent's first, where it
/// may be used, else the first file's. `agentKeys`: the output of `ssh-add -L`.
[[nodiscard]] std::optional<PublicKey>
firstOffered(const SshSettings& settings, const QList<PublicKey>& fileKeys, const QByteArray& agentKeys);

/// Where a new key belongs so that ssh offers it: the usual file, or the first that is configured. Nothing
/// where ssh looks for none.
[[nodiscard]] std::optional<QString> placeForNewKey(const QStringList& identityFiles);
