#include "Desktop/Screens.h"

#include "Desktop/StatusItem/PopoverPlacement.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <memory>

namespace {
/// A window manager may tell two screens in turn of a window that it is placing.
constexpr std::chrono::milliseconds settlingTime{100};
} // namespace

QScreen* screenAt(const QPoint& point) {
    QScreen* const screen = QGuiApplication::screenAt(point);
    return screen ? screen : QGuiApplication::primaryScreen();
}

QScreen* screenUnderPointer() {
    return screenAt(QCursor::pos());
}

void keepPointsOnEveryScreen(QQuickView& window) {
    auto* const settled = new QTimer(&window);
    settled->setSingleShot(true);
    settled->setInterval(settlingTime);
    const auto points = std::make_shared<QSize>();
    QObject::connect(&window, &QWindow::screenChanged, settled, [&window, settled, points] {
        if (!window.isVisible() || !window.rootObject()) // a hidden one is sized when it is shown
            return;
        // The window has counted its size anew by now, what it shows has not.
        if (!settled->isActive())
            *points = window.rootObject()->size().toSize();
        settled->start();
    });
    QObject::connect(settled, &QTimer::timeout, &window, [&window, points] {
        if (window.size() == *points)
            return;
        constexpr int unlimited = (1 << 24) - 1; // as QWindow has it
        // The window manager has these in pixels of the other screen.
        const QSize least = window.minimumSize();
        const QSize most = window.maximumSize();
        window.setMinimumSize(QSize(0, 0));
        window.setMaximumSize(QSize(unlimited, unlimited));
        window.setMinimumSize(least);
        window.setMaximumSize(most);
        // With its centre where it was, so that growing takes it to no other screen.
        QRect frame(QPoint(0, 0), *points);
        frame.moveCenter(window.geometry().center());
        window.setGeometry(
            keepInside(frame, window.screen()->availableGeometry().marginsRemoved(window.frameMargins())));
    });
}
