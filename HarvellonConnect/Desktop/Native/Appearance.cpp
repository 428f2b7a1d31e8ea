#include "Desktop/Native/Appearance.h"

#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

std::optional<bool> prefersDark(uint colorScheme) {
    switch (colorScheme) {
    case 1:
        return true;
    case 2:
        return false;
    default:
        return {};
    }
}

QFont::Weight presentWeight(const QString& family, QFont::Weight wanted) {
    // "Sans Serif" stands for another family, and knows only of the normal weight.
    const QString real = QFontInfo(QFont(family)).family();
    if (QFontDatabase::isPrivateFamily(real)) // the font of macOS has all weights and lists none
        return wanted;
    int lightest = QFont::Black + 1;
    for (const QString& style : QFontDatabase::styles(real)) {
        const int weight = QFontDatabase::weight(real, style);
        if (weight >= wanted && !QFontDatabase::italic(real, style))
            lightest = std::min(lightest, weight);
    }
    return lightest > QFont::Black ? QFont::Bold : static_cast<QFont::Weight>(lightest);
}

Appearance::Appearance(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
    updateDark();
    watchSettings();
}

bool Appearance::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange)
        updateDark();
    return QObject::eventFilter(watched, event);
}

QString Appearance::fontFamily() {
    return QGuiApplication::font().family();
}

void Appearance::applySetting(const QString& settingGroup, const QString& key, const QVariant& value) {
    if (settingGroup == QLatin1String("org.freedesktop.appearance") && key == QLatin1String("color-scheme")) {
        m_preferredDark = prefersDark(value.toUInt());
        updateDark();
    } else if (settingGroup == QLatin1String("org.freedesktop.appearance") &&
               key == QLatin1String("contrast")) {
        setHighContrast(value.toUInt() == 1); // other values mean no preference
    } else if (settingGroup == QLatin1String("org.gnome.desktop.interface") &&
               key == QLatin1String("enable-animations")) {
        setReducedMotion(!value.toBool());
    }
}

void Appearance::setReducedMotion(bool reduced) {
    if (reduced == m_reducedMotion)
        return;
    m_reducedMotion = reduced;
    Q_EMIT reducedMotionChanged();
}

void Appearance::setHighContrast(bool high) {
    if (high == m_highContrast)
        return;
    m_highContrast = high;
    Q_EMIT highContrastChanged();
}

void Appearance::updateDark() {
    const QPalette palette = QGuiApplication::palette();
    const bool darkPalette =
        palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
    const bool dark = m_preferredDark.value_or(darkPalette);
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
}
