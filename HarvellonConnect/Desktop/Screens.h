#pragma once

class QPoint;
class QQuickView;
class QScreen;

/// The screen that contains `point`, else the primary screen.
[[nodiscard]] QScreen* screenAt(const QPoint& point);

[[nodiscard]] QScreen* screenUnderPointer();

/// Lets `window` show the same on every screen: when it comes to one of another scale, it keeps its size in
/// points, where Qt keeps the one in pixels.
void keepPointsOnEveryScreen(QQuickView& window);
