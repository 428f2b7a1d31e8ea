#include "Desktop/Controls/Symbols/PictureItem.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>

PictureItem::PictureItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

QSGNode* PictureItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
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
    const QPointF corner = mapToScene(QPointF(0, 0));
    const int around = qRound(bleed() * ratio);
    const QPoint snapped = (corner * ratio).toPoint() - QPoint(around, around);
    imageNode->setRect(QRectF(QPointF(snapped) / ratio - corner, QSizeF(image.size()) / ratio));
    return imageNode;
}

void PictureItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

void PictureItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged)
        update();
}
