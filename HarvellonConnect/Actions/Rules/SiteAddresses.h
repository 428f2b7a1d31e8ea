#pragma once

#include "Directory/Project.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The site, or its back end.
QString siteAddress(const Project& project, bool backEnd);

/// The shell on the project's host, for the program that handles ssh addresses.
QString shellAddress(const Project& project);

/// The ssh client's arguments for a shell on the project's host. Nothing when the domain is no host name:
/// terminals differ in how they pass arguments on, and some split them at blanks.
std::optional<QStringList> shellArguments(const Project& project);

/// The page whose request empties the site's cache.
QString cacheAddress(const Project& project);
