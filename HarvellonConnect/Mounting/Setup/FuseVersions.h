#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A FUSE that is installed on macOS.
struct InstalledFuse {
    QString name;    ///< "macFUSE" or "FUSE-T"
    QString version; ///< "5.2.0"; empty where it is not told

    bool operator==(const InstalledFuse&) const = default;
};

/// What is installed, from the list of the system's package receipts and the receipt of macFUSE. Both names
/// may be installed beside each other.
[[nodiscard]] QList<InstalledFuse> installedFuse(const QString& receipts, const QString& macFuseReceipt);

/// A sentence for each version that is known to damage files.
[[nodiscard]] QStringList fuseWarnings(const QList<InstalledFuse>& installed);
