#pragma once

#include <QFont>
#include <QObject>
#include <QVariant>
#include <QtQmlIntegration>

#include <optional>

/// The lightest upright weight of `family` that is at least `wanted`: many families have no medium weight,
/// and fonts would take the normal one for it. Bold, which can be made from any other, if there is none.
[[nodiscard]] QFont::Weight presentWeight(const QString& family, QFont::Weight wanted);

/// The desktop's settings for the look of programs, kept up to date. Main thread.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY darkChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(bool highContrast READ highContrast NOTIFY highContrastChanged)
    Q_PROPERTY(QString fontFamily READ fontFamily CONSTANT)
    Q_PROPERTY(int mediumWeight READ mediumWeight CONSTANT)
    Q_PROPERTY(int semiboldWeight READ semiboldWeight CONSTANT)

  public:
    explicit Appearance(QObject* parent = nullptr);

    [[nodiscard]] bool dark() const { return m_dark; }

    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }

    [[nodiscard]] bool highContrast() const { return m_highContrast; }

    /// For all texts; controls would otherwise use a different family from the platform's theme.
    [[nodiscard]] static QString fontFamily();

    /// What the family has for these weights; see presentWeight.
    [[nodiscard]] static int mediumWeight() { return presentWeight(fontFamily(), QFont::Medium); }

    [[nodiscard]] static int semiboldWeight() { return presentWeight(fontFamily(), QFont::DemiBold); }

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Applies a setting, named as in the desktop's settings portal. Ignores settings of no interest here.
    void applySetting(const QString& settingGroup, const QString& key, const QVariant& value);

  Q_SIGNALS:
    void darkChanged();
    void reducedMotionChanged();
    void highContrastChanged();

  private:
    /// Reads the settings that the palette does not contain, and follows their changes.
    void watchSettings();
    void updateDark();
    void setReducedMotion(bool reduced);
    void setHighContrast(bool high);

    std::optional<bool> m_preferredDark; ///< the user's choice for all programs, if any
    bool m_dark = false;
    bool m_reducedMotion = false;
    bool m_highContrast = false;
};

/// The meaning of a color-scheme setting: 1 is dark, 2 is light; with any other value the palette decides.
[[nodiscard]] std::optional<bool> prefersDark(uint colorScheme);
