#include "Desktop/Controls/IconButtonStyle.h"

#include "Desktop/Controls/Symbols/SymbolImage.h"

#include <QCache>
#include <QPainter>
#include <QPen>

#include <cmath>

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
    // All in whole pixels: at a scale of 1.25 half of all points lie between two.
    const int bleed = qRound(ringBleed * ratio);
    const int pixels = qRound(side * ratio);
    const int whole = pixels + 2 * bleed;
    QImage image(whole, whole, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto frame = [&painter, ratio](qreal start, qreal length, qreal line, qreal bend) {
        const qreal inside = length - line;
        painter.drawRoundedRect(QRectF(start + line / 2, start + line / 2, inside, inside), bend * ratio,
                                bend * ratio);
    };

    if (ring.isValid()) {
        const qreal line = std::floor(ringWidth * ratio);
        painter.setPen(QPen(ring, line));
        frame(0, whole, line, ringRadius - ringWidth / 2);
    }

    const qreal line = std::max<qreal>(1, std::floor(ratio));
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    frame(bleed, pixels, line, radius);
    painter.setBrush(faded(tint, hoverFill * isHovered + (pressFill - hoverFill * isHovered) * isPressed));
    painter.setPen(QPen(mixed(outline, faded(tint, hoverOutline), std::max(isHovered, isPressed)), line));
    frame(bleed, pixels, line, radius);

    const int margin = qRound(padding * ratio);
    const int label = pixels - 2 * margin;
    const qreal shown = still ? label : label * (1 - (1 - pressScale) * isPressed);
    const qreal start = bleed + margin + (label - shown) / 2;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, isPressed > 0);
    painter.drawImage(QRectF(start, start, shown, shown), symbolImage(symbol, tint, label));
    return image;
}
