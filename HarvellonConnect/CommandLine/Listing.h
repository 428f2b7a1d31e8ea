#pragma once

#include "System/Requests/Request.h"

#include <QList>
#include <QString>
#include <QStringList>

// What the command line prints, as text for people and pipes or as JSON. Control characters of a server's
// words are replaced, because a terminal would obey them. Any thread.

/// A project as it is listed.
struct ListedProject {
    enum class State { disconnected, connecting, connected, lost };

    QString domain;
    QString name; ///< may be empty
    State state = State::disconnected;
    QString folder{}; ///< where it is mounted
};

/// A line for each project: domain, state, name, separated by tabs.
[[nodiscard]] QString listingOf(const QList<ListedProject>& projects, bool json);

/// What the program is doing.
struct ProgramStatus {
    QString version;
    QString user;    ///< empty where nobody is signed in
    QString problem; ///< the last error; empty for none
    qsizetype projectCount = 0;
    QList<ListedProject> projects; ///< those that are not simply disconnected
};

[[nodiscard]] QString statusText(const ProgramStatus& status, bool json);
