#pragma once

class QPoint;
class QScreen;

/// The screen that contains `point`, else the primary screen.
[[nodiscard]] QScreen* screenAt(const QPoint& point);

[[nodiscard]] QScreen* screenUnderPointer();
