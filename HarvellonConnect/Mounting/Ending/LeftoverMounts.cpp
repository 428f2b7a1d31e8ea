#include "Mounting/Ending/LeftoverMounts.h"

#include "System/Tables/MountTable.h"

namespace {
/// The mount table tells our mounts by the name that the mount options give them (see mountOptions), or,
/// where that name is the volume's alone, by the user and the server.
bool isOwnMount(const MountTable::Entry& mount) {
    return mount.source.startsWith(QStringLiteral("HV ")) ||
           (mount.source.startsWith(QStringLiteral("ssh")) &&
            mount.source.contains(QLatin1Char('@') + mount.path + QLatin1Char(':')));
}

} // namespace

QStringList ownMountsBelow(const QString& root) {
    QStringList names;
    for (const MountTable::Entry& mount : MountTable::mountedBelow(root)) {
        if (isOwnMount(mount))
            names.append(mount.path);
    }
    return names;
}
