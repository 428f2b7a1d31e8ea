#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// Secrets in one file that only the user can read, for desktops without a keyring. The file is replaced as a
/// whole or not at all. Any thread, one at a time.
class SecretFile {
  public:
    struct Item {
        QString service;
        QString account;
        QByteArray data;
    };

    explicit SecretFile(QString path) : m_path(std::move(path)) {}

    bool save(const QByteArray& data, const QString& service, const QString& account);
    [[nodiscard]] std::optional<QByteArray> load(const QString& service, const QString& account) const;
    /// True as well when there was nothing to remove.
    bool remove(const QString& service, const QString& account);

    [[nodiscard]] QList<Item> items() const;
    /// Needs no room on the disk, unlike the removal of one among several.
    bool removeAll();

  private:
    QString m_path;
};
