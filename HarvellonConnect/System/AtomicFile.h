#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// Replaces the file at `path` with `content`, or leaves it unchanged and yields false, on a full disk for
/// example. The folder must exist. A link at `path` is
/// followed: the folder must be one in which nobody else can make one. `permissions` apply to the file where
/// they are given. Any thread.
[[nodiscard]] bool writeAtomically(const QString& path, const QByteArray& content,
                                   QFile::Permissions permissions = {});
