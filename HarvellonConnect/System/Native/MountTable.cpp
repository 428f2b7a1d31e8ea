#include "System/Native/MountTable.h"

#include <QDir>
#include <QFileInfo>

bool MountTable::lists(const QString& path) {
    const QFileInfo mountPoint(path);
    const QString folder = QFileInfo(mountPoint.path()).canonicalFilePath();
    return !folder.isEmpty() && mountPoints().contains(QDir(folder).filePath(mountPoint.fileName()));
}

QStringList MountTable::mountedBelow(const QString& root) {
    QStringList names;
    const QFileInfo existing(root);
    if (!existing.exists())
        return names;
    const QString folder = existing.canonicalFilePath() + QLatin1Char('/');
    for (const QString& path : mountPoints()) {
        if (path.startsWith(folder) && path.indexOf(QLatin1Char('/'), folder.size()) < 0)
            names.append(path.mid(folder.size()));
    }
    return names;
}
