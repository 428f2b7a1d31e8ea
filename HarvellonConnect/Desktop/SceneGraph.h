#pragma once

#include <QByteArray>

/// Decides what draws the windows; call it before the application object is made. HARVELLON_SCENE_GRAPH
/// ("software", "opengl", …) decides before QT_QUICK_BACKEND, and both before this desktop's own choice.
void chooseSceneGraph();

/// The scene graph of `wanted`, else that of `backend`, else `preferred`; empty leaves the choice to Qt.
[[nodiscard]] QByteArray sceneGraphFor(const QByteArray& wanted, const QByteArray& backend,
                                       const QByteArray& preferred);
