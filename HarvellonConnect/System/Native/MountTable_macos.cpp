#include "System/Native/MountTable.h"

#include <QFile>

#include <sys/mount.h>
#include <sys/param.h>

#include <vector>

QStringList MountTable::mountPoints() {
    QStringList paths;
    // MNT_NOWAIT answers from what the kernel knows; the waiting variant asks every file system.
    const int expected = getfsstat(nullptr, 0, MNT_NOWAIT);
    if (expected <= 0)
        return paths;
    std::vector<struct statfs> mounts(static_cast<size_t>(expected) + 8); // some may be added in between
    const int found =
        getfsstat(mounts.data(), static_cast<int>(mounts.size() * sizeof(struct statfs)), MNT_NOWAIT);
    for (int i = 0; i < found; ++i)
        paths.append(QFile::decodeName(mounts[static_cast<size_t>(i)].f_mntonname));
    return paths;
}
