#include "Desktop/StatusItem/StatusSign.h"

#include <QPainter>
#include <QPixmap>

namespace {
using Picture = StatusSign::Picture;

QString counted(const QStringList& domains, const QString& one, const QString& many) {
    return domains.size() == 1 ? one.arg(domains.first()) : many.arg(domains.size());
}

QString detail(const StatusFacts& facts) {
    if (!facts.lost.isEmpty())
        return counted(facts.lost, QStringLiteral("Verbindung zu %1 unterbrochen"),
                       QStringLiteral("%1 Verbindungen unterbrochen"));
    if (facts.signInFailed)
        return QStringLiteral("Anmeldung prüfen");
    if (!facts.connecting.isEmpty())
        return counted(facts.connecting, QStringLiteral("Verbinde mit %1 ..."),
                       QStringLiteral("Verbinde %1 Projekte ..."));
    return facts.mounted == 1 ? QStringLiteral("1 Projekt verbunden")
                              : QStringLiteral("%1 Projekte verbunden").arg(facts.mounted);
}

Picture pictureFor(const StatusFacts& facts) {
    if (!facts.lost.isEmpty() || facts.signInFailed)
        return Picture::trouble;
    if (!facts.connecting.isEmpty())
        return Picture::connecting;
    return facts.mounted > 0 ? Picture::mounted : Picture::plain;
}

const QColor ink(0x80, 0x80, 0x80); // of the plain picture

void clear(QPainter& painter) {
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
}

void draw(QPainter& painter) {
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

/// A dot or a ring in the lower right corner.
void paintMark(QPainter& painter, int size, bool filled) {
    const int gap = qMax(1, size / 16);
    const int width = qMax(5, size * 3 / 8);
    const QRect mark(size - width, size - width, width, width);
    clear(painter);
    painter.drawEllipse(mark.adjusted(-gap, -gap, gap, gap));
    draw(painter);
    if (filled) {
        painter.drawEllipse(mark);
        return;
    }
    const qreal stroke = size / 11.0;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ink, stroke));
    painter.drawEllipse(QRectF(mark).adjusted(stroke / 2, stroke / 2, -stroke / 2, -stroke / 2));
}

/// An exclamation mark in the place of the right end. Lengths are whole pixels, which a small one needs.
void paintExclamation(QPainter& painter, int size) {
    const int gap = qMax(2, size / 10);
    const int stroke = qMax(3, size * 3 / 16);
    const int left = size * 3 / 4 - stroke / 2;
    const int top = size / 16;
    const int dot = size - top - stroke;
    clear(painter);
    painter.drawRect(left - gap, 0, size, size);
    draw(painter);
    painter.drawRoundedRect(left, top, stroke, dot - gap - top, stroke / 2.0, stroke / 2.0);
    painter.drawEllipse(left, dot, stroke, stroke);
}
} // namespace

StatusSign statusSign(const StatusFacts& facts) {
    const Picture picture = pictureFor(facts);
    const QString name = QStringLiteral("Harvellon Connect");
    return {picture, picture == Picture::plain ? name : name + QStringLiteral(": ") + detail(facts)};
}

QIcon statusIcon(Picture picture) {
    QIcon icon;
    for (const int size : {16, 18, 20, 22, 24, 32, 36, 44, 48, 64}) {
        QPixmap pixmap(QStringLiteral(":/icons/StatusIcon-%1.png").arg(size), "PNG"); // as in main()
        if (picture != Picture::plain) {
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            if (picture == Picture::trouble)
                paintExclamation(painter, size);
            else
                paintMark(painter, size, picture == Picture::mounted);
        }
        icon.addPixmap(pixmap);
    }
    icon.setIsMask(true);
    return icon;
}
