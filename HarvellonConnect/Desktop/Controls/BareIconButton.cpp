#include "Desktop/Controls/BareIconButton.h"

#include "Desktop/Controls/HelpTips.h"

#include <QQmlEngine>
#include <QQuickWindow>

namespace {
constexpr int hoverDuration = 120;
constexpr int pressDuration = 80;
constexpr int releaseDuration = 120;
} // namespace

BareIconButton::BareIconButton(QQuickItem* parent) : PictureItem(parent) {
    setImplicitSize(side, side);
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
}

BareIconButton::~BareIconButton() = default;

template <typename Value>
void BareIconButton::change(Value& member, const Value& value) {
    if (member == value)
        return;
    member = value;
    Q_EMIT lookChanged();
    update();
}

void BareIconButton::setSymbol(const QString& symbol) {
    change(m_symbol, symbol);
}

void BareIconButton::setTint(const QColor& tint) {
    change(m_tint, tint);
}

void BareIconButton::setHoverTint(const QColor& tint) {
    change(m_hoverTint, tint);
}

void BareIconButton::setBackground(const QColor& background) {
    change(m_background, background);
}

void BareIconButton::setOutline(const QColor& outline) {
    change(m_outline, outline);
}

void BareIconButton::setRingColor(const QColor& color) {
    change(m_ringColor, color);
}

void BareIconButton::setIsHovered(bool hovered) {
    if (hovered == m_isHovered)
        return;
    m_isHovered = hovered;
    ease(m_hoverLight, hovered ? 1 : 0, hoverDuration);
    Q_EMIT isHoveredChanged();
}

QImage BareIconButton::picture(qreal ratio) const {
    IconButtonStyle style;
    style.symbol = m_symbol;
    style.tint = m_isHovered && m_hoverTint.isValid() ? m_hoverTint : m_tint;
    style.background = m_background;
    style.outline = m_outline;
    if (m_ringShown)
        style.ring = m_ringColor;
    style.isHovered = m_hoverLight.value;
    style.isPressed = m_pressLight.value;
    style.still = m_still;
    return style.picture(width(), ratio);
}

void BareIconButton::ease(Eased& eased, qreal target, int milliseconds) {
    if (!isVisible() || !window() || m_still) {
        eased.animation.reset();
        eased.value = target;
        update();
        return;
    }
    if (!eased.animation) {
        eased.animation = std::make_unique<QVariantAnimation>();
        eased.animation->setEasingCurve(QEasingCurve::OutCubic);
        connect(eased.animation.get(), &QVariantAnimation::valueChanged, this,
                [this, &eased](const QVariant& value) {
                    eased.value = value.toReal();
                    update();
                });
    }
    eased.animation->stop();
    eased.animation->setDuration(milliseconds);
    eased.animation->setStartValue(eased.value);
    eased.animation->setEndValue(target);
    eased.animation->start();
}

void BareIconButton::setHovered(bool hovered) {
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    if (HelpTips* tips = HelpTips::of(this))
        hovered ? tips->enter(this, m_help, m_keys) : tips->leave(this);
    Q_EMIT hoveredChanged();
}

void BareIconButton::setPressed(bool pressed) {
    if (pressed == m_pressed)
        return;
    m_pressed = pressed;
    ease(m_pressLight, pressed ? 1 : 0, pressed ? pressDuration : releaseDuration);
}

void BareIconButton::hoverEnterEvent(QHoverEvent* event) {
    setHovered(true);
    event->ignore(); // the row below must not lose the pointer, with which its pin would go
}

void BareIconButton::hoverLeaveEvent(QHoverEvent*) {
    setHovered(false);
}

void BareIconButton::mousePressEvent(QMouseEvent*) {
    if (HelpTips* tips = HelpTips::of(this))
        tips->leave(this);
    setPressed(true);
}

void BareIconButton::mouseMoveEvent(QMouseEvent* event) {
    setPressed(contains(event->position()));
}

void BareIconButton::mouseReleaseEvent(QMouseEvent* event) {
    const bool hit = m_pressed;
    setPressed(false);
    if (hit)
        Q_EMIT clicked(event->modifiers().testFlag(Qt::ShiftModifier));
}

void BareIconButton::mouseUngrabEvent() {
    setPressed(false);
}

void BareIconButton::keyPressEvent(QKeyEvent* event) {
    const bool presses =
        event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool plain = !(event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
    if (!presses || !plain) {
        event->ignore();
        return;
    }
    if (!event->isAutoRepeat())
        Q_EMIT clicked(event->modifiers().testFlag(Qt::ShiftModifier));
}

void BareIconButton::focusInEvent(QFocusEvent* event) {
    m_ringShown = event->reason() != Qt::MouseFocusReason;
    update();
}

void BareIconButton::focusOutEvent(QFocusEvent*) {
    m_ringShown = false;
    update();
}

void BareIconButton::itemChange(ItemChange changed, const ItemChangeData& data) {
    PictureItem::itemChange(changed, data);
    // A row that is reused for another project must not keep the hover state.
    if (changed == ItemVisibleHasChanged && !data.boolValue) {
        setHovered(false);
        setPressed(false);
    }
}
