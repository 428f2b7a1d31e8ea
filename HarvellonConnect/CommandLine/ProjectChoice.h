#pragma once

#include "Directory/Project.h"

#include <QList>
#include <QString>

/// The project that `word` means: its domain, the domain without "www.", or the beginning of either where it
/// is the only one; upper and lower case count as the same. Throws RequestError, which names the projects
/// that were nearest. Any thread.
[[nodiscard]] Project chosenProject(const QList<Project>& projects, const QString& word);

/// The domain in a link of the form "harvellon:DOMAIN" or "harvellon://DOMAIN"; whatever follows the domain
/// is ignored. Empty where it holds no plain domain. Any thread.
[[nodiscard]] QString domainInLink(const QString& link);
