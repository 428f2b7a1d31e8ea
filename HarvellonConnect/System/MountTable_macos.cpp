#include "System/MountTable.h"

#include <QFile>

#include <sys/mount.h>
#include <sys/param.h>

#include <vector>

bool MountTable::lists(const QString& path) {
    const QByteArray wanted = QFile::encodeName(path);
    // MNT_NOWAIT answers from what the kernel knows; the waiting variant asks every file system.
    const int expected = getfsstat(nullptr, 0, MNT_NOWAIT);
    if (expected <= 0)
        return false;
    std::vector<struct statfs> mounts(static_cast<size_t>(expected) + 8); // some may be added in between
    const int found =
        getfsstat(mounts.data(), static_cast<int>(mounts.size() * sizeof(struct statfs)), MNT_NOWAIT);
    for (int i = 0; i < found; ++i) {
        if (wanted == mounts[static_cast<size_t>(i)].f_mntonname)
            return true;
    }
    return false;
}
