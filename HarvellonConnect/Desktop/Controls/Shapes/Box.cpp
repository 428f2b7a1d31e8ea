#include "Desktop/Controls/Shapes/Box.h"

#include <QImage>
#include <QPainter>
#include <QPen>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>

#include <array>
#include <cmath>

namespace {
/// The pixels of a line as thick as `points`: whole ones, and the same number wherever it lies.
int linePixels(qreal points, qreal ratio) {
    return points > 0 ? std::max(1, static_cast<int>(points * ratio)) : 0;
}
} // namespace

Box::Box(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

template <typename Value>
void Box::change(Value& member, const Value& value) {
    if (member == value)
        return;
    member = value;
    Q_EMIT lookChanged();
    update();
}

void Box::setColor(const QColor& color) {
    change(m_color, color);
}

void Box::setBorderColor(const QColor& color) {
    change(m_borderColor, color);
}

void Box::setBorderWidth(qreal width) {
    change(m_borderWidth, width);
}

void Box::setRadius(qreal radius) {
    change(m_radius, radius);
}

QImage Box::cornersAround(int corner, int border, qreal radius) const {
    const int side = 2 * corner + 1;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(border > 0 ? QPen(m_borderColor, border) : QPen(Qt::NoPen));
    painter.setBrush(m_color);
    const qreal inset = border / 2.0;
    const qreal bend = std::max<qreal>(0, std::min(radius, side / 2.0) - inset);
    painter.drawRoundedRect(QRectF(image.rect()).adjusted(inset, inset, -inset, -inset), bend, bend);
    painter.end();
    return image.copy(); // a picture that was painted keeps its painter's engine, several times its size
}

QSGNode* Box::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    delete node;
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const int border = m_borderColor.alpha() > 0 ? linePixels(m_borderWidth, ratio) : 0;
    if (border == 0 && m_color.alpha() == 0)
        return nullptr;

    const QPointF origin = mapToScene(QPointF(0, 0));
    const auto pixels = [ratio](qreal point) { return qRound(point * ratio); };
    const int left = pixels(origin.x());
    const int right = pixels(origin.x() + width());
    const int top = pixels(origin.y());
    const int bottom = pixels(origin.y() + height());
    if (right <= left || bottom <= top)
        return nullptr;
    const qreal radius = m_radius * ratio;
    const int corner = std::min(
        {std::max(border, static_cast<int>(std::ceil(radius))), (right - left) / 2, (bottom - top) / 2});
    // Three by three parts of one small picture: the corners as they are, the rest made longer. A rectangle
    // in the middle is painted faster; but the software renderer rounds what it covers to points, and leaves
    // black what it takes for covered, so it must not be thin.
    const std::array columns{left, left + corner, right - corner, right};
    const std::array rows{top, top + corner, bottom - corner, bottom};
    const std::array source{0, corner, corner + 1, 2 * corner + 1};
    auto* const box = new QSGNode;
    QSGTexture* texture = nullptr;
    for (size_t part = 0; part < 9; ++part) {
        const auto place = [x = part % 3, y = part / 3](const auto& xs, const auto& ys) {
            return QRectF(xs[x], ys[y], xs[x + 1] - xs[x], ys[y + 1] - ys[y]);
        };
        const QRectF target = place(columns, rows);
        const QRectF points(target.topLeft() / ratio - origin, target.size() / ratio);
        constexpr size_t middle = 4;
        constexpr qreal thin = 2; // points
        if (target.isEmpty())
            continue;
        if (part == middle && std::min(points.width(), points.height()) > thin) {
            QSGRectangleNode* const fill = window()->createRectangleNode();
            fill->setRect(points);
            fill->setColor(m_color);
            box->appendChildNode(fill);
            continue;
        }
        QSGImageNode* const image = window()->createImageNode();
        image->setOwnsTexture(!texture);
        if (!texture)
            texture = window()->createTextureFromImage(cornersAround(corner, border, radius),
                                                       QQuickWindow::TextureHasAlphaChannel);
        image->setTexture(texture);
        image->setFiltering(QSGTexture::Nearest);
        image->setRect(points);
        image->setSourceRect(place(source, source));
        box->appendChildNode(image);
    }
    return box;
}

void Box::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    update();
}

void Box::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged)
        update();
}
