#pragma once

/// The buttons of a project's row.
enum class HoverTarget { disconnect, connect, vscode, finder, ssh, cache, safari, database };
