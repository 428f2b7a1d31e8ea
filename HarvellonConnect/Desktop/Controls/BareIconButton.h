#pragma once

#include "Desktop/Controls/IconButtonStyle.h"
#include "Desktop/Controls/Symbols/PictureItem.h"

#include <QColor>
#include <QVariantAnimation>
#include <QtQmlIntegration>

#include <memory>

/// A button with a symbol, drawn as one item with one picture, because a list shows a hundred of them at
/// once. Its accessible role, name and press action are set where it is used. A click does not move the
/// focus.
class BareIconButton : public PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString symbol MEMBER m_symbol WRITE setSymbol NOTIFY lookChanged)
    Q_PROPERTY(QColor tint MEMBER m_tint WRITE setTint NOTIFY lookChanged)
    Q_PROPERTY(QColor hoverTint MEMBER m_hoverTint WRITE setHoverTint NOTIFY lookChanged)
    Q_PROPERTY(QColor background MEMBER m_background WRITE setBackground NOTIFY lookChanged)
    Q_PROPERTY(QColor outline MEMBER m_outline WRITE setOutline NOTIFY lookChanged)
    Q_PROPERTY(QColor ringColor MEMBER m_ringColor WRITE setRingColor NOTIFY lookChanged)
    /// Reduced motion: hover and press change at once, and a press does not shrink the symbol.
    Q_PROPERTY(bool still MEMBER m_still NOTIFY stillChanged)
    Q_PROPERTY(QString help MEMBER m_help NOTIFY helpChanged)
    Q_PROPERTY(QString keys MEMBER m_keys NOTIFY helpChanged)
    Q_PROPERTY(bool hovered READ hovered NOTIFY hoveredChanged)
    Q_PROPERTY(bool isHovered READ isHovered WRITE setIsHovered NOTIFY isHoveredChanged)

  public:
    static constexpr qreal side = 30;

    explicit BareIconButton(QQuickItem* parent = nullptr);
    ~BareIconButton() override;

    void setSymbol(const QString& symbol);
    void setTint(const QColor& tint);
    void setHoverTint(const QColor& tint);
    void setBackground(const QColor& background);
    void setOutline(const QColor& outline);
    void setRingColor(const QColor& color);

    [[nodiscard]] bool hovered() const { return m_hovered; }

    [[nodiscard]] bool isHovered() const { return m_isHovered; }

    void setIsHovered(bool hovered);

  Q_SIGNALS:
    /// `shift`: whether the Shift key was held.
    void clicked(bool shift);
    void lookChanged();
    void stillChanged();
    void helpChanged();
    void hoveredChanged();
    void isHoveredChanged();

  protected:
    [[nodiscard]] QImage picture(qreal ratio) const override;

    [[nodiscard]] qreal bleed() const override { return IconButtonStyle::ringBleed; }

    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

  private:
    /// A value that is animated towards its target; the animation object is created when first needed.
    struct Eased {
        qreal value = 0;
        std::unique_ptr<QVariantAnimation> animation;
    };

    void setHovered(bool hovered);
    void setPressed(bool pressed);
    void ease(Eased& eased, qreal target, int milliseconds);
    template <typename Value>
    void change(Value& member, const Value& value);

    QString m_symbol;
    QColor m_tint = Qt::black;
    QColor m_hoverTint; ///< the tint under the pointer, where it differs
    QColor m_background = Qt::transparent;
    QColor m_outline;
    QColor m_ringColor;
    QString m_help;
    QString m_keys;
    bool m_still = false;
    bool m_hovered = false;
    bool m_isHovered = false;
    bool m_pressed = false;
    bool m_ringShown = false;
    Eased m_hoverLight;
    Eased m_pressLight;
};
