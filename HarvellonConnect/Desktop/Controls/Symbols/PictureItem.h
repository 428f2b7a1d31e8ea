#pragma once

#include <QQuickItem>

/// An item that shows one image of its own making, sharp on the screen's pixel grid.
class PictureItem : public QQuickItem {
    Q_OBJECT

  protected:
    explicit PictureItem(QQuickItem* parent = nullptr);

    /// The picture of the item, with `bleed()` around it, for a screen with `ratio` pixels to the point.
    [[nodiscard]] virtual QImage picture(qreal ratio) const = 0;

    /// How far the picture reaches beyond the item on every side, in points; rounded to whole pixels.
    [[nodiscard]] virtual qreal bleed() const { return 0; }

    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
};
