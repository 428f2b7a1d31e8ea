#pragma once

#include "Directory/Project.h"

#include <QByteArray>
#include <QList>

// Projects as this program stores them between two runs. Any thread.

[[nodiscard]] QByteArray storedProjects(const QList<Project>& projects);

/// The projects in `json`. What the directory could not have sent, and what no action would accept, is left
/// out: the file may have been written by another program, or another version of this one.
[[nodiscard]] QList<Project> projectsStoredIn(const QByteArray& json);
