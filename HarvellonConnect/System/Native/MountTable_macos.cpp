#include "System/Native/MountTable.h"

#include <QFile>

#include <sys/mount.h>
#include <sys/param.h>

#include <vector>

QStringList MountTable::mountPoints() {
    QStringList paths;
    // MNT_NOWAIT reads what the kernel has cached; MNT_WAIT would ask every file system and block on its
    // server.
    const int expected = getfsstat(nullptr, 0, MNT_NOWAIT);
    if (expected <= 0)
        return paths;
    std::vector<struct statfs> mounts(static_cast<size_t>(expected) +
                                      8); // mounts may be added between the two calls
    const int found =
        getfsstat(mounts.data(), static_cast<int>(mounts.size() * sizeof(struct statfs)), MNT_NOWAIT);
    for (int i = 0; i < found; ++i)
        paths.append(QFile::decodeName(mounts[static_cast<size_t>(i)].f_mntonname));
    return paths;
}
