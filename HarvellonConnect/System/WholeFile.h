#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// Puts `content` at `path` as a whole, or leaves what was there: a full disk shows as false. The folder must
/// exist. `permissions`: of the file, where they matter. Any thread.
[[nodiscard]] bool writeWholeFile(const QString& path, const QByteArray& content,
                                  QFile::Permissions permissions = {});
