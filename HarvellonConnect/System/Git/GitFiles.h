#pragma once

#include "System/HostSystem.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The files that the user's configuration of git includes; see GitSettings.
namespace GitFiles {

/// Where the file lies that trusts `trusted` and includes the other one, and where that one lies.
[[nodiscard]] QString configPath(const HostSystem& host);
[[nodiscard]] QString mountsPath(const HostSystem& host);

/// `mountRoot`: absolute, without links. `trusted`: relative to it.
[[nodiscard]] QByteArray config(const QString& mountRoot, const QStringList& trusted);
[[nodiscard]] QByteArray mounts();

} // namespace GitFiles
