#pragma once

#include <QColor>
#include <QImage>
#include <QString>

/// The look of a button with a symbol at one moment: the symbol on a rounded square that is filled with its
/// tint under the pointer.
struct IconButtonStyle {
    static constexpr qreal padding = 6; ///< around the symbol, in points
    static constexpr qreal radius = 7;
    static constexpr qreal hoverFill = 0.12; ///< opacities of the tint
    static constexpr qreal pressFill = 0.18;
    static constexpr qreal hoverOutline = 0.40;
    static constexpr qreal pressScale = 0.96;
    static constexpr qreal disabledOpacity = 0.38;
    static constexpr qreal ringBleed = 3; ///< how far the focus ring reaches beyond the button
    static constexpr qreal ringWidth = 2;
    static constexpr qreal ringRadius = 10;

    QString symbol;
    QColor tint;
    QColor background; ///< of the resting button; transparent in a row
    QColor outline;
    QColor ring;         ///< invalid without the keyboard's focus
    qreal isHovered = 0; ///< 0 to 1; values between are steps of the animation
    qreal isPressed = 0;
    bool still = false; ///< a press does not shrink the symbol

    /// The button of `side` points, with the ring's bleed around it.
    [[nodiscard]] QImage picture(qreal side, qreal ratio) const;

  private:
    [[nodiscard]] QImage draw(qreal side, qreal ratio) const;
};
