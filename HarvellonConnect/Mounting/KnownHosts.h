#pragma once

#include "System/HostSystem.h"

/// Sees to it that this program's own list of host keys exists, for the user alone; the user's own list is
/// never touched. Throws MounterError::mountFailed.
void prepareKnownHosts(const HostSystem& host);
