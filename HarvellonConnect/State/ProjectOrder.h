#pragma once

#include "Directory/Project.h"

#include <QList>

/// The projects by domain, as the user's language sorts and regardless of case; equal ones keep their order.
QList<Project> sortedByDomain(const QList<Project>& projects);
