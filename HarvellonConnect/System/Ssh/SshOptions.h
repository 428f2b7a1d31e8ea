#pragma once

#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

/// A path quoted for an option of ssh, where a blank separates values and a percent sign starts a token.
[[nodiscard]] QString sshPath(const QString& path);

/// The arguments with which ssh knows servers by this program's own list, adds new ones, refuses changed
/// ones, asks nobody, and gives an unreachable server up after ten seconds.
[[nodiscard]] QStringList ownTrustArguments(const HostSystem& host);
