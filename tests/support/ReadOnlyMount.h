#pragma once

#include <QByteArray>

#include <sched.h>
#include <sys/mount.h>

/// Shows `source` at `target`, read-only, to this thread and those that it starts. Says whether it could.
inline bool mountReadOnly(const QByteArray& source, const QByteArray& target) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(source, target, nullptr, MS_BIND, nullptr) == 0 &&
           ::mount(nullptr, target, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}
