#include "Desktop/Controls/IconButtonStyle.h"

#include "Desktop/Controls/Symbols/SymbolImage.h"

#include <QCache>
#include <QPainter>
#include <QPen>

namespace {
QColor mixed(const QColor& from, const QColor& to, qreal share) {
    const auto between = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(between(from.redF(), to.redF()), between(from.greenF(), to.greenF()),
                            between(from.blueF(), to.blueF()), between(from.alphaF(), to.alphaF()));
}

QColor faded(QColor color, qreal opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

/// The cache key of a resting button: everything that changes its picture.
struct RestingLook {
    QString symbol;
    QRgb tint;
    QRgb background;
    QRgb outline;
    QRgb ring; ///< 0 without one
    int pixels;
    qreal ratio;

    bool operator==(const RestingLook&) const = default;
};

size_t qHash(const RestingLook& look, size_t seed = 0) {
    return qHashMulti(seed, look.symbol, look.tint, look.background, look.outline, look.ring, look.pixels);
}
} // namespace

QImage IconButtonStyle::picture(qreal side, qreal ratio) const {
    if (isHovered > 0 || isPressed > 0)
        return draw(side, ratio);
    // Cached, because a list shows a hundred resting buttons that share a dozen pictures.
    constexpr int kept = 64;
    static QCache<RestingLook, QImage> cache(kept);
    const RestingLook look{symbol,
                           tint.rgba(),
                           background.rgba(),
                           outline.rgba(),
                           ring.isValid() ? ring.rgba() : 0,
                           qRound(side * ratio),
                           ratio};
    if (const QImage* image = cache.object(look))
        return *image;
    QImage image = draw(side, ratio);
    cache.insert(look, new QImage(image));
    return image;
}

QImage IconButtonStyle::draw(qreal side, qreal ratio) const {
    const qreal whole = side + 2 * ringBleed;
    QImage image(qRound(whole * ratio), qRound(whole * ratio), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(ratio, ratio);

    if (ring.isValid()) {
        constexpr qreal half = ringWidth / 2;
        painter.setPen(QPen(ring, ringWidth));
        painter.drawRoundedRect(QRectF(half, half, whole - ringWidth, whole - ringWidth), ringRadius - half,
                                ringRadius - half);
    }

    painter.translate(ringBleed, ringBleed);
    // An outline one device pixel wide or a whole number of them stays sharp.
    const qreal line = std::max<qreal>(1, std::floor(ratio)) / ratio;
    const QRectF body(line / 2, line / 2, side - line, side - line);
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(body, radius, radius);
    painter.setBrush(faded(tint, hoverFill * isHovered + (pressFill - hoverFill * isHovered) * isPressed));
    painter.setPen(QPen(mixed(outline, faded(tint, hoverOutline), std::max(isHovered, isPressed)), line));
    painter.drawRoundedRect(body, radius, radius);

    const qreal label = side - 2 * padding;
    const qreal scale = still ? 1 : 1 - (1 - pressScale) * isPressed;
    const QImage drawn = symbolImage(symbol, tint, qRound(label * ratio));
    const qreal shown = label * scale;
    const QRectF place(padding + (label - shown) / 2, padding + (label - shown) / 2, shown, shown);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, isPressed > 0);
    painter.drawImage(place, drawn);
    return image;
}
