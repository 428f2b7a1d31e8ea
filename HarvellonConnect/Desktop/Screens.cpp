#include "Desktop/Screens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

QScreen* screenAt(const QPoint& point) {
    QScreen* const screen = QGuiApplication::screenAt(point);
    return screen ? screen : QGuiApplication::primaryScreen();
}

QScreen* screenUnderPointer() {
    return screenAt(QCursor::pos());
}
