#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

/// The user's preferences of this program: a few typed values under fixed keys. A value of another type
/// counts as absent. Main thread; each change is written at once.
class Preferences {
  public:
    /// `file`: an INI file that takes the place of the desktop's own store; empty for that store. `fixed`:
    /// what the administrator has laid down, which takes the place of what the user has stored and is never
    /// stored.
    explicit Preferences(const QString& file, QVariantMap fixed = {});

    [[nodiscard]] std::optional<bool> boolean(const QString& key) const;
    [[nodiscard]] std::optional<QString> text(const QString& key) const;
    [[nodiscard]] std::optional<QByteArray> data(const QString& key) const;

    /// Stores `values` in one piece and says whether they have reached the store (a full disk keeps the old
    /// ones). An invalid value removes its key.
    bool set(const QVariantMap& values);

    bool set(const QString& key, const QVariant& value) { return set({{key, value}}); }

    /// The value as it is stored, of whatever type; invalid when there is none.
    [[nodiscard]] QVariant value(const QString& key) const {
        return m_fixed.contains(key) ? fixed(key) : m_settings->value(key);
    }

    /// What the administrator has laid down; invalid where that is left to the user.
    [[nodiscard]] QVariant fixed(const QString& key) const { return m_fixed.value(key); }

    /// Tries again to store what could not be stored.
    void retry();

    /// Where the values are kept.
    [[nodiscard]] QString file() const;

  private:
    bool write();
    const QString m_file;
    const QVariantMap m_fixed;
    std::unique_ptr<QSettings> m_settings;
};
