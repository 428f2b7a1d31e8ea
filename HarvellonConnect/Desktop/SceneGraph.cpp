#include "Desktop/SceneGraph.h"

#include <QQuickWindow>
#include <QSGRendererInterface>

#include <optional>

namespace {
/// The software renderer starts the panel in a third of the time and with less than half of the memory that a
/// GPU context needs, and the panel is small and rarely animated. On macOS Metal is always available.
QByteArray desktopDefault() {
    const bool metal = QSysInfo::productType() == QLatin1String("macos");
    return metal ? QByteArray() : QByteArrayLiteral("software");
}

std::optional<QSGRendererInterface::GraphicsApi> graphicsApiFor(const QByteArray& name) {
    if (name == "software")
        return QSGRendererInterface::Software;
    if (name == "opengl" || name == "rhi")
        return QSGRendererInterface::OpenGL;
    if (name == "vulkan")
        return QSGRendererInterface::Vulkan;
    if (name == "metal")
        return QSGRendererInterface::Metal;
    return {};
}
} // namespace

QByteArray sceneGraphFor(const QByteArray& wanted, const QByteArray& backend, const QByteArray& preferred) {
    if (!wanted.isEmpty())
        return wanted.toLower();
    return backend.isEmpty() ? preferred : backend.toLower();
}

void chooseSceneGraph() {
    const QByteArray name =
        sceneGraphFor(qgetenv("HARVELLON_SCENE_GRAPH"), qgetenv("QT_QUICK_BACKEND"), desktopDefault());
    const auto graphics = graphicsApiFor(name);
    if (!graphics)
        return;
    QQuickWindow::setGraphicsApi(*graphics);
    // Otherwise Qt's X11 plug-in loads the whole GL driver, which the software renderer never uses.
    if (*graphics == QSGRendererInterface::Software && qEnvironmentVariableIsEmpty("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
}
