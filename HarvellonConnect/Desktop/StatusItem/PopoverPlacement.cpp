#include "Desktop/StatusItem/PopoverPlacement.h"

#include <algorithm>
#include <array>
#include <cmath>

// QRect::right() and bottom() are one less than the edge, so edges are computed as left + width and top +
// height.

QRect wholePoints(const QRect& visible, qreal ratio) {
    const auto whole = [ratio](int points) { return std::fmod(points * ratio, 1) > 0 ? points - 1 : points; };
    return {visible.topLeft(), QSize(whole(visible.width()), whole(visible.height()))};
}

QRect keepInside(QRect frame, const QRect& visible) {
    const auto rightOf = [](const QRect& rect) { return rect.x() + rect.width(); };
    const auto bottomOf = [](const QRect& rect) { return rect.y() + rect.height(); };
    if (rightOf(frame) > rightOf(visible))
        frame.moveLeft(rightOf(visible) - frame.width());
    if (frame.x() < visible.x())
        frame.moveLeft(visible.x());
    if (frame.y() < visible.y())
        frame.moveTop(visible.y());
    if (bottomOf(frame) > bottomOf(visible))
        frame.moveTop(bottomOf(visible) - frame.height());
    return frame;
}

QRect besideItem(const QSize& size, const QRect& item, const QRect& visible) {
    constexpr int gap = 4;
    const int below = visible.y() + visible.height() - (item.y() + item.height());
    const int above = item.y() - visible.y();
    const bool fitsBelow = below >= size.height() + gap || below >= above;
    const int x = item.x() + (item.width() - size.width()) / 2;
    const int y = fitsBelow ? item.y() + item.height() + gap : item.y() - gap - size.height();
    return keepInside({QPoint(x, y), size}, visible);
}

QRect besideBar(const QSize& size, const QRect& screen, const QRect& visible, const QPoint& pointer) {
    constexpr int margin = 8;
    const std::array reserved{
        visible.y() - screen.y(),
        screen.y() + screen.height() - visible.y() - visible.height(),
        visible.x() - screen.x(),
        screen.x() + screen.width() - visible.x() - visible.width(),
    };
    const auto edge = std::max_element(reserved.begin(), reserved.end()) - reserved.begin();
    const bool horizontalBar = edge < 2;
    const bool onBar = screen.contains(pointer) && !visible.contains(pointer);
    const bool leftEnd = onBar && pointer.x() < screen.center().x();
    const bool upperEnd = onBar && pointer.y() < screen.center().y();

    const QRect room = visible.marginsRemoved({margin, margin, margin, margin});
    QRect frame(room.topLeft(), size);
    if (horizontalBar ? !leftEnd : edge == 3)
        frame.moveLeft(room.x() + room.width() - size.width());
    if (horizontalBar ? edge == 1 : !upperEnd)
        frame.moveTop(room.y() + room.height() - size.height());
    return keepInside(frame, visible);
}
