#pragma once

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

class Preferences;

/// What the administrator of this machine has laid down, for the settings to show and the state to keep to.
/// It stays the same while the program runs. Main thread.
class Management : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(bool fixesHotkey READ fixesHotkey CONSTANT)
    Q_PROPERTY(bool fixesLoginItem READ fixesLoginItem CONSTANT)
    /// What no control of the settings shows, as one line; empty when there is nothing.
    Q_PROPERTY(QString summary READ summary CONSTANT)

  public:
    /// `preferences` outlive this.
    explicit Management(const Preferences& preferences) : m_preferences(preferences) {}

    [[nodiscard]] bool fixesHotkey() const;

    [[nodiscard]] bool fixesLoginItem() const { return startsAtLogin().has_value(); }

    [[nodiscard]] std::optional<bool> startsAtLogin() const;
    [[nodiscard]] QString summary() const;

  private:
    const Preferences& m_preferences;
};
