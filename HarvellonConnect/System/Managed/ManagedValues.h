#pragma once

#include <QStringList>
#include <QVariantMap>

/// What the administrator of this machine has laid down, as it stands there: not checked yet.
struct ManagedValues {
    QVariantMap values;
    QStringList problems; ///< German sentences: a file that is not used, and why

    /// Linux: every value of the first file `harvellon.com/HarvellonConnect.conf` that nobody but root can
    /// change, in /etc/xdg and then in the folders of XDG_CONFIG_DIRS. macOS: those of `keys` that a
    /// configuration profile forces. Reads files; main thread, at the start.
    [[nodiscard]] static ManagedValues read(const QStringList& keys);
};
