#include "Desktop/Controls/Symbols/SymbolImage.h"

#include "Desktop/Native/NativeDesktop.h"

#include <QCache>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace {
struct Key {
    QString name;
    QRgb color;
    int pixels;

    bool operator==(const Key&) const = default;
};

size_t qHash(const Key& key, size_t seed = 0) {
    return qHashMulti(seed, key.name, key.color, key.pixels);
}

QImage tinted(QImage image, const QColor& color) {
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

QImage draw(const QString& name, const QColor& color, int pixels) {
    const QImage native = nativeSymbol(name, pixels);
    if (!native.isNull())
        return tinted(native, color);
    const QString path = QStringLiteral(":/icons/") + name + QStringLiteral(".svg");
    if (!QFile::exists(path))
        return {};
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(path);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return tinted(image, color);
}
} // namespace

QImage symbolImage(const QString& name, const QColor& color, int pixels) {
    constexpr int kept = 256; // every symbol, in each of its colours and sizes
    static QCache<Key, QImage> cache(kept);
    const Key key{name, color.rgba(), pixels};
    if (const QImage* image = cache.object(key))
        return *image;
    QImage image = draw(name, color, pixels);
    cache.insert(key, new QImage(image));
    return image;
}
