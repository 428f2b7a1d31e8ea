#pragma once

/// What follows exists since that version of macOS; check.sh rejects a call that an older supported one does not have.
#define SINCE_MACOS(version) __attribute__((availability(macos, introduced = version)))
