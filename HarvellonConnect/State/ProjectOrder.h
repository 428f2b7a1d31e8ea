#pragma once

#include "Directory/Project.h"

#include <QList>
#include <QStringList>

/// The projects sorted by domain, by the rules of the user's language and without regard to case. The sort is
/// stable.
QList<Project> sortedByDomain(const QList<Project>& projects);

/// A text in the form in which names are compared when people search: without case and diacritics.
QString searchKey(const QString& text);

/// Projects as a list shows and searches them: sorted, each with its search key. Any thread: with 10,000
/// projects making it takes longer than the main thread may be away.
struct ProjectList {
    QList<Project> projects;
    QStringList searchKeys;

    static ProjectList of(const QList<Project>& projects);
};
