#pragma once

/// Sends diagnostic lines to the desktop's log: on macOS to the unified log, under this program's identifier
/// and the line's category, with public arguments. On Linux they go to standard error, which the session
/// collects. Call it once, before anything is logged.
void installSystemLog();
