#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// What a report tells of this machine.
struct Versions {
    QList<std::pair<QString, QString>> lines; ///< what, and which version
    QStringList warnings;                     ///< of versions that damage files
};

/// Asks the programs that we use, each for five seconds at most. Never throws. Main thread; `shell` outlives
/// this.
QCoro::Task<Versions> askVersions(HostSystem host, Shell& shell);
