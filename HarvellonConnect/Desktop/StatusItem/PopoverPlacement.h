#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// `frame` moved, never resized, so that it lies in `visible`; of a frame too large, the left and bottom
/// edges.
[[nodiscard]] QRect keepInside(QRect frame, const QRect& visible);

/// Where a panel of `size` stands that belongs to `item` of the bar: centred below it, or above it where only
/// there is room, and inside `visible`.
[[nodiscard]] QRect besideItem(const QSize& size, const QRect& item, const QRect& visible);

/// Where a panel stands whose item's position is unknown: at the bar, which is where `visible` leaves most of
/// `screen` out (the upper edge where it leaves out nothing). With `pointer` on the bar, at the pointer's end
/// of it; otherwise at its right or lower end, where status items live.
[[nodiscard]] QRect besideBar(const QSize& size, const QRect& screen, const QRect& visible,
                              const QPoint& pointer);
