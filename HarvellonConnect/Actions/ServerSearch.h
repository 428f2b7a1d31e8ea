#pragma once

#include "Actions/ActionContext.h"
#include "Actions/Rules/GrepOutput.h"
#include "System/Failure.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

/// A search that could not be made.
class SearchError : public TextFailure {
  public:
    using TextFailure::TextFailure;
};

/// The command line for the server's shell that seeks `pattern` below `folder`. Its exit status is grep's.
[[nodiscard]] QString searchCommand(const QString& folder, const QString& pattern);

/// Seeks a piece of text in the files of a mounted project, on the server: literally, upper and lower case
/// told apart, without binary files, links, `.git` and `node_modules`. Takes 40 seconds at most; 1,000 hits
/// at most. Throws SearchError: for a project that is not mounted or whose domain is no host name, for a
/// pattern that is empty, longer than 1,000 characters or not one line, and when ssh or the server's grep
/// fails; ShellError without ssh. Main thread.
QCoro::Task<SearchHits> searchOnServer(const ActionContext& context, Project project, QString pattern);
