#pragma once

#include <QObject>
#include <QVariant>
#include <QtQmlIntegration>

#include <optional>

class QQuickItem;

/// How the desktop wants programs to look, as it changes. Main thread.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY darkChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(QString fontFamily READ fontFamily CONSTANT)

  public:
    explicit Appearance(QObject* parent = nullptr);

    /// The appearance that the engine of `item` uses; null for an item that no engine made.
    [[nodiscard]] static const Appearance* of(const QQuickItem* item);

    [[nodiscard]] bool dark() const { return m_dark; }

    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }

    /// Of the program's words; controls would take another one from the platform's theme.
    [[nodiscard]] static QString fontFamily();

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Takes over one setting of the desktop, under the names that the settings portal uses.
    void take(const QString& space, const QString& key, const QVariant& value);

  Q_SIGNALS:
    void darkChanged();
    void reducedMotionChanged();

  private:
    /// Asks for the settings that no palette tells, and for their changes.
    void followDesktop();
    void decide();

    std::optional<bool> m_preferred; ///< what the user has chosen for all programs
    bool m_dark = false;
    bool m_reducedMotion = false;
};

/// What a color-scheme setting asks for: 1 is dark, 2 is light, anything else leaves it to the palette.
[[nodiscard]] std::optional<bool> prefersDark(uint colorScheme);
