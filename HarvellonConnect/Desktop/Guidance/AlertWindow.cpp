#include "Desktop/Guidance/AlertWindow.h"

#include "Desktop/Native/NativeDesktop.h"
#include "Desktop/QmlViews.h"
#include "Desktop/Screens.h"

#include <QQuickItem>
#include <QScreen>

AlertWindow::AlertWindow(QmlViews& views, const QString& view, const QVariantMap& properties)
    : QQuickView(&views.engine(), nullptr) {
    setFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint);
    setModality(Qt::ApplicationModal);
    setTitle(QStringLiteral("Harvellon Connect"));
    setInitialProperties(properties);
    setSource(QmlViews::address(view));
    fit();
    keepPointsOnEveryScreen(*this);
    connect(rootObject(), &QQuickItem::heightChanged, this, &AlertWindow::fit);
}

void AlertWindow::fit() {
    const QSize needed = rootObject()->size().toSize();
    setMinimumSize(needed);
    setMaximumSize(needed);
    resize(needed);
}

void AlertWindow::present() {
    QRect frame = geometry();
    frame.moveCenter(screenUnderPointer()->availableGeometry().center());
    setPosition(frame.topLeft());
    activateApplication();
    show();
    raise();
    requestActivate();
}

bool AlertWindow::event(QEvent* event) {
    if (event->type() == QEvent::Close)
        Q_EMIT dismissed();
    return QQuickView::event(event);
}
