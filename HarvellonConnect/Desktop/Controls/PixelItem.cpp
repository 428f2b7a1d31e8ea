#include "Desktop/Controls/PixelItem.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>

PixelItem::PixelItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

QSGNode* PixelItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    auto* imageNode = static_cast<QSGImageNode*>(node);
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const QImage image = picture(ratio);
    if (image.isNull()) {
        delete imageNode;
        return nullptr;
    }
    if (!imageNode) {
        imageNode = window()->createImageNode();
        imageNode->setOwnsTexture(true);
        imageNode->setFiltering(QSGTexture::Linear);
    }
    imageNode->setTexture(window()->createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));

    // At a scale of 1.5 half of all points lie between two pixels.
    const QPointF corner = mapToScene(QPointF(-bleed(), -bleed()));
    const QPointF snapped(std::round(corner.x() * ratio) / ratio, std::round(corner.y() * ratio) / ratio);
    const QPointF offset = snapped - corner - QPointF(bleed(), bleed());
    imageNode->setRect(QRectF(offset, QSizeF(image.size()) / ratio));
    return imageNode;
}

void PixelItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

void PixelItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged)
        update();
}
