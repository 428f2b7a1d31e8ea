#pragma once

#include "System/HostSystem.h"
#include "System/Managed/ManagedValues.h"
#include "System/Network/ServerAddress.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

/// What can be laid down, by the names in the administrator's file; where the user has a setting for it, by
/// the name of its preference.
namespace SettingKey {
inline const QString server = QStringLiteral("Server");
inline const QString updates = QStringLiteral("Updates");
inline const QString hotkey = QStringLiteral("GlobalHotkeyEnabled");
inline const QString startsAtLogin = QStringLiteral("StartsAtLogin");
inline const QString editor = QStringLiteral("Editor");
inline const QString editorCommand = QStringLiteral("EditorCommand");
inline const QString terminal = QStringLiteral("Terminal");
inline const QString terminalCommand = QStringLiteral("TerminalCommand");
} // namespace SettingKey

/// What the administrator of this machine has laid down, and the user cannot change.
struct ManagedSettings {
    QVariantMap values;   ///< booleans and texts by their keys, as the preferences keep them
    QStringList problems; ///< German sentences about what is not used

    /// Reads and checks; what cannot be used is told in the system log as well. Main thread, at the start.
    static ManagedSettings read(const HostSystem& host);
    /// Keeps what this program knows and can use on `host`.
    static ManagedSettings checked(const ManagedValues& found, const HostSystem& host);

    /// The server that is laid down, otherwise `ServerAddress::configured`: no environment leads past it.
    [[nodiscard]] ServerAddress server(const QString& builtIn) const {
        return values.contains(SettingKey::server)
                   ? ServerAddress::checked(values.value(SettingKey::server).toString())
                   : ServerAddress::configured(builtIn);
    }

    /// Whether this program may look for newer versions.
    [[nodiscard]] bool allowsUpdates() const { return values.value(SettingKey::updates, true).toBool(); }
};
