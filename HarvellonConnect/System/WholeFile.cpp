#include "System/WholeFile.h"

#include <QSaveFile>

bool writeWholeFile(const QString& path, const QByteArray& content, QFile::Permissions permissions) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || (permissions && !file.setPermissions(permissions)))
        return false;
    // Committing does not notice what fails only when the buffer is emptied: it would put an empty file
    // there.
    if (file.write(content) != content.size() || !file.flush()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
