#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// A login of this program, as it is remembered between runs. Its identity is `id`.
struct Account {
    QString id;
    std::optional<QString> email;
    QString displayName;

    bool operator==(const Account&) const = default;
};

/// The remembered list as JSON and back. Decoding throws DecodingError; it is all or nothing.
QByteArray encodeAccounts(const QList<Account>& accounts);
QList<Account> decodeAccounts(const QByteArray& json);
