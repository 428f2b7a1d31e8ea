#pragma once

#include "BrowserTab/SessionFile.h"

#include <QDateTime>
#include <QList>
#include <QString>

/// The newest session file of one profile.
struct ProfileSession {
    QString path;
    QDateTime written;
};

/// A browser that runs, or is taken to run because its lock lies there.
struct RunningBrowser {
    QString folder; ///< holds its profiles
    qint64 pid = 0; ///< from the lock file; 0 for a browser in a container, whose pid is of another namespace
    QDateTime started;
};

/// Where Google Chrome and Chromium keep their profiles: `configFolder` is the user's for configuration,
/// `home` is for those that come as snap or flatpak.
QList<RunningBrowser> runningBrowsers(const QString& configFolder, const QString& home);

/// One for each of the browser's profiles that has been open since it was started.
QList<ProfileSession> sessionsOf(const RunningBrowser& browser);
