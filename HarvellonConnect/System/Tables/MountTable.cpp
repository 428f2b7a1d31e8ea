#include "System/Tables/MountTable.h"

#include <QDir>
#include <QFileInfo>

bool MountTable::lists(const QString& path) {
    const QFileInfo mountPoint(path);
    const QString folder = QFileInfo(mountPoint.path()).canonicalFilePath();
    return !folder.isEmpty() && mountPoints().contains(QDir(folder).filePath(mountPoint.fileName()));
}

QList<MountTable::Entry> MountTable::mountedBelow(const QString& root) {
    QList<Entry> mounts;
    const QFileInfo existing(root);
    if (!existing.exists())
        return mounts;
    const QString folder = existing.canonicalFilePath() + QLatin1Char('/');
    for (const Entry& entry : entries()) {
        if (entry.path.startsWith(folder) && entry.path.indexOf(QLatin1Char('/'), folder.size()) < 0)
            mounts.append({entry.path.mid(folder.size()), entry.source, entry.type});
    }
    return mounts;
}

QStringList MountTable::mountPoints() {
    QStringList paths;
    for (const Entry& entry : entries())
        paths.append(entry.path);
    return paths;
}
