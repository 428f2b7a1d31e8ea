#include "Desktop/Controls/Symbols/SymbolIcon.h"

#include "Desktop/Controls/Symbols/SymbolImage.h"

void SymbolIcon::setSymbol(const QString& symbol) {
    if (symbol == m_symbol)
        return;
    m_symbol = symbol;
    Q_EMIT symbolChanged();
    update();
}

void SymbolIcon::setColor(const QColor& color) {
    if (color == m_color)
        return;
    m_color = color;
    Q_EMIT colorChanged();
    update();
}

void SymbolIcon::setSize(qreal size) {
    if (qFuzzyCompare(size, implicitWidth()))
        return;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

QImage SymbolIcon::picture(qreal ratio) const {
    return symbolImage(m_symbol, m_color, qRound(width() * ratio));
}
