#include "Desktop/Panel/PanelWindow.h"

#include "Desktop/Screens.h"

#include <QGuiApplication>
#include <QPainterPath>

#include <algorithm>

namespace {
/// Without a compositor transparent pixels are black, so the corners are cut off. The radius is one less than
/// that of the drawn corner, whose antialiased edge thus lies inside.
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
    // Qt on macOS hides tool windows of a program that is not active. The panel can have the keyboard without
    // the program being active, and hides by itself when it loses it.
    setProperty("_q_macAlwaysShowToolWindow", true);
    keepPointsOnEveryScreen(*this);
    connect(this, &QWindow::screenChanged, this, [this] {
        if (m_kind == Kind::popover)
            setMask(roundedMask(size())); // in pixels of the new screen
    });
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

void PanelWindow::fitInto(int availableHeight) {
    // The window manager reports the frame's real height only after the window is shown.
    constexpr int usualFrameHeight = 40;
    const bool popover = m_kind == Kind::popover;
    setFixedSize(
        {panelSize.width(),
         std::min(panelSize.height(), popover ? availableHeight : availableHeight - usualFrameHeight)});
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

void PanelWindow::preRender() {
    // On Wayland a hidden window has no surface. The renderer would still count the panel as drawn, and the
    // window would be transparent when it is shown.
    if (!isVisible() && !isWayland(QGuiApplication::platformName()))
        grabWindow();
}

bool PanelWindow::closedJustNow() const {
    constexpr int sameClick = 300; // milliseconds from the press until the tray reports the click
    return m_sinceFocusLoss.isValid() && m_sinceFocusLoss.elapsed() < sameClick;
}

void PanelWindow::activeHasChanged() {
    if (isActive() || !isVisible() || m_kind != Kind::popover)
        return;
    m_sinceFocusLoss.start();
    hide();
}

bool PanelWindow::event(QEvent* event) {
    // Closing the last window would end the program, so only hide the panel.
    if (event->type() == QEvent::Close) {
        hide();
        event->ignore();
        return true;
    }
    return QQuickView::event(event);
}
