#include "Desktop/Panel/PanelWindow.h"

#include <QGuiApplication>
#include <QPainterPath>

#include <algorithm>

namespace {
/// One point less than the drawn corner, so that its soft edge lies inside: without a compositor what is left
/// transparent would be black.
QRegion roundedMask(const QSize& size) {
    constexpr qreal radius = 11;
    QPainterPath shape;
    shape.addRoundedRect(QRectF(QPointF(0, 0), QSizeF(size)), radius, radius);
    return QRegion(shape.toFillPolygon().toPolygon());
}

bool isWayland(const QString& platform) {
    return platform.startsWith(QLatin1String("wayland"));
}
} // namespace

PanelWindow::Kind panelKind(bool trayAvailable, const QString& platform) {
    return trayAvailable && !isWayland(platform) ? PanelWindow::Kind::popover : PanelWindow::Kind::window;
}

PanelWindow::PanelWindow(QQmlEngine* engine) : QQuickView(engine, nullptr) {
    setResizeMode(QQuickView::SizeRootObjectToView);
    setTitle(QStringLiteral("Harvellon Connect"));
    setColor(Qt::transparent);
    setFixedSize(panelSize);
    setPersistentSceneGraph(true);
    connect(this, &QWindow::activeChanged, this, &PanelWindow::activeHasChanged);
}

void PanelWindow::setKind(Kind kind) {
    if (isVisible())
        return;
    m_kind = kind;
    const bool popover = kind == Kind::popover;
    setFlags(popover ? Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                     : Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    setMask(popover ? roundedMask(size()) : QRegion());
}

void PanelWindow::fitInto(int room) {
    // A window manager tells how much it adds when the window is shown, which is too late.
    constexpr int usualFrame = 40;
    const bool popover = m_kind == Kind::popover;
    setFixedSize({panelSize.width(), std::min(panelSize.height(), popover ? room : room - usualFrame)});
    if (popover)
        setMask(roundedMask(size()));
}

void PanelWindow::setFixedSize(const QSize& size) {
    if (size == this->size() && size == maximumSize())
        return;
    setMinimumSize(size);
    setMaximumSize(size);
    resize(size);
}

void PanelWindow::warm() {
    // On Wayland a hidden window has nothing to draw on; the renderer would take the panel for drawn, and
    // leave it see-through when it is shown.
    if (!isVisible() && !isWayland(QGuiApplication::platformName()))
        grabWindow();
}

bool PanelWindow::closedJustNow() const {
    constexpr int sameClick = 300; // milliseconds between the press and what the bar makes of it
    return m_sinceFocusLoss.isValid() && m_sinceFocusLoss.elapsed() < sameClick;
}

void PanelWindow::activeHasChanged() {
    if (isActive() || !isVisible() || m_kind != Kind::popover)
        return;
    m_sinceFocusLoss.start();
    hide();
}

bool PanelWindow::event(QEvent* event) {
    // Closing would end the program as the last window's end; the panel only goes out of sight.
    if (event->type() == QEvent::Close) {
        hide();
        event->ignore();
        return true;
    }
    return QQuickView::event(event);
}
