#include "BrowserTab/Profiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <sys/stat.h>

QList<RunningBrowser> runningBrowsers(const QString& configFolder, const QString& home) {
    struct Place {
        QString folder;
        bool contained;
    };

    const Place places[] = {
        {configFolder + QStringLiteral("/google-chrome"), false},
        {configFolder + QStringLiteral("/google-chrome-beta"), false},
        {configFolder + QStringLiteral("/google-chrome-unstable"), false},
        {configFolder + QStringLiteral("/chromium"), false},
        {home + QStringLiteral("/snap/chromium/common/chromium"), true},
        {home + QStringLiteral("/.var/app/com.google.Chrome/config/google-chrome"), true},
        {home + QStringLiteral("/.var/app/org.chromium.Chromium/config/chromium"), true},
    };
    QList<RunningBrowser> running;
    for (const Place& place : places) {
        // A link whose target, "host-pid", never exists. A crash leaves it behind.
        const QString lock = place.folder + QStringLiteral("/SingletonLock");
        const qint64 pid =
            QFileInfo(QFile::symLinkTarget(lock)).fileName().section(QLatin1Char('-'), -1).toLongLong();
        struct stat link = {};
        if (pid <= 0 || ::lstat(QFile::encodeName(lock).constData(), &link) != 0)
            continue;
        const QDateTime started = QDateTime::fromSecsSinceEpoch(link.st_mtime);
        if (place.contained)
            running.append({place.folder, 0, started});
        else if (QFileInfo::exists(QStringLiteral("/proc/%1").arg(pid)))
            running.append({place.folder, pid, started});
    }
    return running;
}

QList<ProfileSession> sessionsOf(const RunningBrowser& browser) {
    QList<ProfileSession> sessions;
    for (const QString& profile : QDir(browser.folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QDir folder(browser.folder + QLatin1Char('/') + profile + QStringLiteral("/Sessions"));
        const QFileInfoList files =
            folder.entryInfoList({QStringLiteral("Session_*")}, QDir::Files, QDir::Time);
        // An older one is that of a profile without windows.
        if (!files.isEmpty() && files.first().lastModified() >= browser.started)
            sessions.append({files.first().filePath(), files.first().lastModified()});
    }
    return sessions;
}
