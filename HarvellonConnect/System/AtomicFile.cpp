#include "System/AtomicFile.h"

#include <QSaveFile>

bool writeAtomically(const QString& path, const QByteArray& content, QFile::Permissions permissions) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || (permissions && !file.setPermissions(permissions)))
        return false;
    // QSaveFile::commit() ignores a failed flush and would replace the file with an empty one.
    if (file.write(content) != content.size() || !file.flush()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
