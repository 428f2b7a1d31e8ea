#pragma once

#include "System/HostSystem.h"

#include <QString>
#include <QStringList>

#include <chrono>

/// A path quoted for an option of ssh, where a blank separates values and a percent sign starts a token.
[[nodiscard]] QString sshPath(const QString& path);

/// The arguments with which ssh knows servers by this program's own list, adds new ones, refuses changed
/// ones, asks nobody, and gives an unreachable server up after ten seconds.
[[nodiscard]] QStringList ownTrustArguments(const HostSystem& host);

/// The arguments against forwardings of the user's own configuration: they would take the ports that the
/// user's own ssh needs.
[[nodiscard]] QStringList noForwardings();

/// The arguments with which ssh connects to `login` ("user@server") and stays in the background, for calls
/// through `socket`. It ends by itself when nothing has used it for `idle`.
[[nodiscard]] QStringList masterArguments(const HostSystem& host, const QString& socket, const QString& login,
                                          std::chrono::seconds idle);
