#pragma once

#include <QString>
#include <QUrl>

class QQmlEngine;

/// Lets the engine find the program's own views. Any number of times.
void addViews(QQmlEngine& engine);

/// Where the view of this name lies within the program.
[[nodiscard]] QUrl viewAddress(const QString& name);
