#include "sandbox/PrivateFile.h"

#include <QDir>
#include <QSaveFile>

#include <stdexcept>

void sandbox::makeFolder(const QString& path) {
    if (!QDir().mkpath(path))
        throw std::runtime_error("cannot create the folder " + path.toStdString());
}

void sandbox::writePrivateFile(const QString& path, const QByteArray& bytes, QFile::Permissions more) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | more) ||
        file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error("cannot write " + path.toStdString() + ": " +
                                 file.errorString().toStdString());
}

QByteArray sandbox::contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
