#include "Mounting/Keys/KnownHosts.h"

#include "Mounting/MounterError.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

namespace {
/// Makes `path` and its missing parents, readable by the user alone. What exists stays as it is.
void makeFolders(const QString& path) {
    const QFileInfo folder(path);
    if (folder.isDir())
        return;
    makeFolders(folder.absolutePath());
    if (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) != 0 && errno != EEXIST)
        throw SystemError(path, qt_error_string(errno));
}
} // namespace

void prepareKnownHosts(const HostSystem& host) {
    if (host.privateFolder.isEmpty())
        throw MounterError(MounterError::Case::mountFailed,
                           QStringLiteral("Application Support Verzeichnis nicht zugänglich."));
    makeFolders(host.privateFolder);
    QFile file(host.knownHostsFile());
    if (file.exists())
        return;
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner))
        throw SystemError(file.fileName(), file.errorString());
}
