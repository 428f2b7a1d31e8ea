#include "System/Managed/ManagedValues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <sys/stat.h>

namespace {
/// Whether root alone decides what lies there: the file and all folders above belong to root, and nobody else
/// may write to them. Others may write to a folder such as /tmp, where each can only remove what is his own.
bool isRootsAlone(const QString& path) {
    struct stat status {};

    if (::stat(QFile::encodeName(path).constData(), &status) != 0 || status.st_uid != 0)
        return false;
    const bool othersWrite = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    if (othersWrite && !(S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0))
        return false;
    return path == QLatin1String("/") || isRootsAlone(QFileInfo(path).path());
}

QStringList folders() {
    // Always and first, so that no environment leads past it.
    QStringList all{QStringLiteral("/etc/xdg")};
    for (const QString& folder : qEnvironmentVariable("XDG_CONFIG_DIRS").split(QLatin1Char(':')))
        if (QDir::isAbsolutePath(folder))
            all.append(QDir::cleanPath(folder));
    return all;
}
} // namespace

ManagedValues ManagedValues::read(const QStringList& /*keys*/) {
    ManagedValues found;
    for (const QString& folder : folders()) {
        const QString file = folder + QStringLiteral("/harvellon.com/HarvellonConnect.conf");
        const QFileInfo info(file);
        if (!info.exists())
            continue;
        // Of a link both ends count.
        if (!isRootsAlone(file) || !isRootsAlone(info.canonicalFilePath())) {
            found.problems.append(
                QStringLiteral("%1 wird nicht verwendet: Nicht nur root kann diese Datei ändern.").arg(file));
            continue;
        }
        const QSettings settings(file, QSettings::IniFormat);
        for (const QString& key : settings.allKeys())
            found.values.insert(key, settings.value(key));
        if (settings.status() != QSettings::NoError || !info.isReadable())
            found.problems.append(QStringLiteral("%1 ist nicht lesbar.").arg(file));
        break;
    }
    return found;
}
