#include "System/Tables/MountTable.h"

#include <QFile>

#include <sys/mount.h>
#include <sys/param.h>

#include <vector>

QList<MountTable::Entry> MountTable::entries() {
    QList<Entry> mountsFound;
    // MNT_NOWAIT reads what the kernel has cached; MNT_WAIT would ask every file system and block on its
    // server.
    const int expected = getfsstat(nullptr, 0, MNT_NOWAIT);
    if (expected <= 0)
        return mountsFound;
    std::vector<struct statfs> mounts(static_cast<size_t>(expected) +
                                      8); // mounts may be added between the two calls
    const int found =
        getfsstat(mounts.data(), static_cast<int>(mounts.size() * sizeof(struct statfs)), MNT_NOWAIT);
    for (int i = 0; i < found; ++i) {
        const struct statfs& mount = mounts[static_cast<size_t>(i)];
        mountsFound.append({QFile::decodeName(mount.f_mntonname), QFile::decodeName(mount.f_mntfromname),
                            QString::fromLatin1(mount.f_fstypename)});
    }
    return mountsFound;
}
