#include "Desktop/SceneGraph.h"

#include <QQuickWindow>
#include <QSGRendererInterface>

#include <optional>

namespace {
/// The panel is small and mostly still: without a GPU context it starts in a third of the time and in less
/// than half of the memory. On macOS Metal is there anyway.
QByteArray preferredHere() {
    const bool metal = QSysInfo::productType() == QLatin1String("macos");
    return metal ? QByteArray() : QByteArrayLiteral("software");
}

std::optional<QSGRendererInterface::GraphicsApi> interfaceNamed(const QByteArray& name) {
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
        sceneGraphFor(qgetenv("HARVELLON_SCENE_GRAPH"), qgetenv("QT_QUICK_BACKEND"), preferredHere());
    const auto graphics = interfaceNamed(name);
    if (!graphics)
        return;
    QQuickWindow::setGraphicsApi(*graphics);
    // X11's part of Qt would load the whole GL driver for windows that never use it.
    if (*graphics == QSGRendererInterface::Software && qEnvironmentVariableIsEmpty("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
}
