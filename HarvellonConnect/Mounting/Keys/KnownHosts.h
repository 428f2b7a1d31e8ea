#pragma once

#include "System/HostSystem.h"

/// Makes this program's own, private list of host keys if it is missing. Never touches the user's own list.
/// Throws SystemError, or MounterError::mountFailed where the host has no private folder.
void prepareKnownHosts(const HostSystem& host);
