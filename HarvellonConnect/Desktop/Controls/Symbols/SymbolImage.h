#pragma once

#include <QColor>
#include <QImage>
#include <QString>

/// The symbol drawn in one colour as a square of `pixels`; drawn once and kept. An unknown name gives an
/// empty image. Callable on the main thread only.
[[nodiscard]] QImage symbolImage(const QString& name, const QColor& color, int pixels);
