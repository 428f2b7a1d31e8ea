#pragma once

#include <QColor>
#include <QQuickItem>
#include <QtQmlIntegration>

/// A rectangle with a border and round corners, lengths in points. Unlike that of Qt Quick, all its edges lie
/// on the pixel grid and its lines are equally thick on every side, also with 1.25 or 1.5 pixels to the
/// point.
class Box : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY lookChanged)
    Q_PROPERTY(QColor borderColor MEMBER m_borderColor WRITE setBorderColor NOTIFY lookChanged)
    Q_PROPERTY(qreal borderWidth MEMBER m_borderWidth WRITE setBorderWidth NOTIFY lookChanged)
    Q_PROPERTY(qreal radius MEMBER m_radius WRITE setRadius NOTIFY lookChanged)

  public:
    explicit Box(QQuickItem* parent = nullptr);

    void setColor(const QColor& color);
    void setBorderColor(const QColor& color);
    void setBorderWidth(qreal width);
    void setRadius(qreal radius);

  Q_SIGNALS:
    void lookChanged();

  protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

  private:
    template <typename Value>
    void change(Value& member, const Value& value);
    /// The box as small as its corners allow: a corner of so many pixels on each side of one pixel.
    [[nodiscard]] QImage cornersAround(int corner, int border, qreal radius) const;

    QColor m_color = Qt::transparent;
    QColor m_borderColor = Qt::transparent;
    qreal m_borderWidth = 1;
    qreal m_radius = 0;
};
