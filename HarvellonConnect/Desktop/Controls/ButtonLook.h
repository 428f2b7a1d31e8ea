#pragma once

#include "Desktop/Controls/IconButtonStyle.h"

#include <QObject>
#include <QtQmlIntegration>

/// The look of the drawn buttons, for those written in QML: lengths in points, opacities and scales from 0
/// to 1.
class ButtonLook : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(qreal radius MEMBER m_radius CONSTANT)
    Q_PROPERTY(qreal hoverFill MEMBER m_hoverFill CONSTANT)
    Q_PROPERTY(qreal pressFill MEMBER m_pressFill CONSTANT)
    Q_PROPERTY(qreal hoverOutline MEMBER m_hoverOutline CONSTANT)
    Q_PROPERTY(qreal pressScale MEMBER m_pressScale CONSTANT)
    Q_PROPERTY(qreal disabledOpacity MEMBER m_disabledOpacity CONSTANT)
    Q_PROPERTY(qreal ringBleed MEMBER m_ringBleed CONSTANT)
    Q_PROPERTY(qreal ringWidth MEMBER m_ringWidth CONSTANT)
    Q_PROPERTY(qreal ringRadius MEMBER m_ringRadius CONSTANT)

  public:
    using QObject::QObject;

  private:
    const qreal m_radius = IconButtonStyle::radius;
    const qreal m_hoverFill = IconButtonStyle::hoverFill;
    const qreal m_pressFill = IconButtonStyle::pressFill;
    const qreal m_hoverOutline = IconButtonStyle::hoverOutline;
    const qreal m_pressScale = IconButtonStyle::pressScale;
    const qreal m_disabledOpacity = IconButtonStyle::disabledOpacity;
    const qreal m_ringBleed = IconButtonStyle::ringBleed;
    const qreal m_ringWidth = IconButtonStyle::ringWidth;
    const qreal m_ringRadius = IconButtonStyle::ringRadius;
};
