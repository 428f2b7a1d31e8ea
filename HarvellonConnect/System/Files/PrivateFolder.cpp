#include "System/Files/PrivateFolder.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
bool onlyUserWrites(int folder) {
    struct stat status {};

    return ::fstat(folder, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}
} // namespace

bool makePrivateFolder(const QString& folder) {
    const QFileInfo path(folder);
    const QByteArray name = QFile::encodeName(path.fileName());
    const int parent =
        ::open(QFile::encodeName(path.absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (parent < 0)
        return false;
    bool ours = onlyUserWrites(parent);
    if (ours) {
        ::mkdirat(parent, name.constData(), S_IRWXU);
        const int made = ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        ours = made >= 0 && onlyUserWrites(made) && ::fchmod(made, S_IRWXU) == 0;
        if (made >= 0)
            ::close(made);
    }
    ::close(parent);
    return ours;
}
