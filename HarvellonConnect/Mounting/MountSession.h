#pragma once

#include "Directory/Project.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <sys/types.h>

class MountQuestions;
class SSHFSProcess;
class WarmUp;

/// One live mount.
struct MountSession {
    QString domain;
    QString mountPoint; ///< absolute path of the local folder
    std::shared_ptr<SSHFSProcess> process;
    QDateTime startedAt; ///< when the server had answered
    Project project;
    std::shared_ptr<MountQuestions> questions;
    std::shared_ptr<WarmUp> warmUp;
    bool coversFiles = false; ///< the mount hides local files that lie in the folder
    mode_t folderMode = 0;    ///< the permissions of the folder before the mount
};

/// How an unmount went.
enum class UnmountResult {
    ended,     ///< nothing is left of the mount
    filesOpen, ///< files in use stay usable, and sshfs ends when the last one is closed
    writing,   ///< the same, and data is being written
    stalled,   ///< the same, but the server is silent; ssh gives it up after 45 seconds
    cutOff     ///< a program was writing, and had to be cut off
};
