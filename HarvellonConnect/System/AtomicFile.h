#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// Replaces the file at `path` with `content`, or leaves it unchanged and yields false, on a full disk for
/// example. The folder must exist. `permissions` apply to the file where they are given. Any thread.
[[nodiscard]] bool writeAtomically(const QString& path, const QByteArray& content,
                                   QFile::Permissions permissions = {});
