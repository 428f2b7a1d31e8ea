#pragma once

#include <QString>

/// Whether `domain` is safe as one folder name and as one host name for ssh: not empty, no leading hyphen, no
/// blank, no control character and nothing that a file system, sshfs or a shell treats specially. Callable
/// from any thread.
bool isPlainDomain(const QString& domain);
