#include "Mounting/Ending/LeftoverMounts.h"

#include "System/HostSystem.h"

namespace {
/// The mount table tells our mounts by the name that the mount options give them (see mountOptions), or,
/// where that name is the volume's alone, by the user and the server.
bool isOwnSource(const QString& source, const QString& folder) {
    return source.startsWith(QStringLiteral("HV ")) ||
           (source.startsWith(QStringLiteral("ssh")) &&
            source.contains(QLatin1Char('@') + folder + QLatin1Char(':')));
}
} // namespace

std::optional<FuseKind> fuseOf(const HostSystem& host, const MountTable::Entry& mount) {
    for (const FuseKind& kind : host.fuseKinds) {
        if (kind.types.contains(mount.type) && mount.source.startsWith(kind.sourcePrefix))
            return kind;
    }
    return std::nullopt;
}

bool isOwnMount(const HostSystem& host, const MountTable::Entry& mount) {
    const std::optional<FuseKind> fuse = fuseOf(host, mount);
    return isOwnSource(fuse ? mount.source.mid(fuse->sourcePrefix.size()) : mount.source, mount.path);
}

QStringList ownMountsBelow(const HostSystem& host) {
    QStringList names;
    for (const MountTable::Entry& mount : MountTable::mountedBelow(host.mountRoot())) {
        if (isOwnMount(host, mount))
            names.append(mount.path);
    }
    return names;
}
