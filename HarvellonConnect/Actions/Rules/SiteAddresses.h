#pragma once

#include "Directory/Project.h"

#include <QString>

// Of projects whose domain has been checked, see Directory/PlainDomain.

/// The site, or its back end.
QString siteAddress(const Project& project, bool backEnd);

/// The shell on the project's host, for the program that handles ssh addresses.
QString shellAddress(const Project& project);

/// The page whose request empties the site's cache.
QString cacheAddress(const Project& project);
