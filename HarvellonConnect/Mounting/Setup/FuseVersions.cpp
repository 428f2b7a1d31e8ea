#include "Mounting/Setup/FuseVersions.h"

#include <QVersionNumber>

namespace {
const QString macFuse = QStringLiteral("macFUSE");
const QString fuseT = QStringLiteral("FUSE-T");

/// A fault of a release, as its own tracker of faults describes it.
struct KnownFault {
    QString name;
    QVersionNumber first;
    QVersionNumber fixed;
    QString damage;
};

const QList<KnownFault>& knownFaults() {
    static const QList<KnownFault> faults{
        {macFuse, {5, 0}, {5, 4}, QStringLiteral("über FSKit werden Dateien unter 15 Bytes zu Nullen")},
        {macFuse,
         {5, 2},
         {5, 3},
         QStringLiteral("über sshfs geschriebene Dateien ab 3 MB werden beschädigt")}};
    return faults;
}
} // namespace

QList<InstalledFuse> installedFuse(const QString& receipts, const QString& macFuseReceipt) {
    const QString fuseTReceipt = QStringLiteral("org.fuse-t.core.");
    QList<InstalledFuse> installed;
    for (const QString& receipt : receipts.split(QLatin1Char('\n'))) {
        if (receipt.startsWith(fuseTReceipt))
            installed.append({fuseT, receipt.mid(fuseTReceipt.size()).trimmed()});
    }
    for (const QString& line : macFuseReceipt.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("version:")))
            installed.append({macFuse, line.section(QLatin1Char(':'), 1).trimmed()});
    }
    return installed;
}

QStringList fuseWarnings(const QList<InstalledFuse>& installed) {
    QStringList warnings;
    for (const InstalledFuse& fuse : installed) {
        const QVersionNumber version = QVersionNumber::fromString(fuse.version);
        for (const KnownFault& fault : knownFaults()) {
            if (fuse.name == fault.name && version >= fault.first && version < fault.fixed)
                warnings.append(QStringLiteral("%1 %2 beschädigt Dateien: %3.")
                                    .arg(fuse.name, fuse.version, fault.damage));
        }
    }
    return warnings;
}
