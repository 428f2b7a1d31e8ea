#pragma once

/// Sends diagnostic lines to the desktop's log: on macOS to the unified log, under this program's identifier
/// and the line's category, readable by whoever may read that log. On Linux standard error is where the
/// session collects them. Once, before anything is logged.
void installSystemLog();
