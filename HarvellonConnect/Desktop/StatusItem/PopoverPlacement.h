#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// `visible` on a screen with `ratio` pixels to the point, without the last column or row of points if it is
/// one in part only.
[[nodiscard]] QRect wholePoints(const QRect& visible, qreal ratio);

/// Moves `frame` into `visible` without resizing it. If it is too large, its left and bottom edges stay
/// visible.
[[nodiscard]] QRect keepInside(QRect frame, const QRect& visible);

/// The frame for a panel of `size` at the status item's frame `item`: centred below it, or above it if there
/// is only room above, and inside `visible`.
[[nodiscard]] QRect besideItem(const QSize& size, const QRect& item, const QRect& visible);

/// The frame for a panel of `size` when the status item's geometry is unknown: at the bar, which is the edge
/// of `screen` where `visible` leaves out most (the upper edge if it leaves out nothing). If `pointer` is on
/// the bar, at the end of the bar nearest to it; otherwise at the right or lower end, where status items are.
[[nodiscard]] QRect besideBar(const QSize& size, const QRect& screen, const QRect& visible,
                              const QPoint& pointer);
