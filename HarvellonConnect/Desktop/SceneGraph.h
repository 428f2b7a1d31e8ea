#pragma once

#include <QByteArray>

/// Sets the renderer of all windows; call it before creating the application object. HARVELLON_SCENE_GRAPH
/// ("software", "opengl", …) has precedence over QT_QUICK_BACKEND, and both over the desktop's default.
void chooseSceneGraph();

/// The first of `wanted`, `backend` and `preferred` that is not empty, the first two in lower case. An empty
/// result leaves the choice to Qt.
[[nodiscard]] QByteArray sceneGraphFor(const QByteArray& wanted, const QByteArray& backend,
                                       const QByteArray& preferred);
