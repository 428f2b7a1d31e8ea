#pragma once

#include "Desktop/Controls/Symbols/PictureItem.h"

#include <QColor>
#include <QtQmlIntegration>

/// A symbol of the icon set in one colour. Cheap enough for every row of a long list.
class SymbolIcon : public PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString symbol READ symbol WRITE setSymbol NOTIFY symbolChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged)

  public:
    using PictureItem::PictureItem;

    [[nodiscard]] QString symbol() const { return m_symbol; }

    void setSymbol(const QString& symbol);

    [[nodiscard]] QColor color() const { return m_color; }

    void setColor(const QColor& color);

    [[nodiscard]] qreal size() const { return implicitWidth(); }

    void setSize(qreal size);

  Q_SIGNALS:
    void symbolChanged();
    void colorChanged();
    void sizeChanged();

  protected:
    [[nodiscard]] QImage picture(qreal ratio) const override;

  private:
    QString m_symbol;
    QColor m_color = Qt::black;
};
