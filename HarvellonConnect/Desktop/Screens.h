#pragma once

class QPoint;
class QScreen;

/// The screen that shows `point`; the primary screen where none does.
[[nodiscard]] QScreen* screenAt(const QPoint& point);

[[nodiscard]] QScreen* screenUnderPointer();
