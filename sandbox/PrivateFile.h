#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace sandbox {

/// Makes a folder and those above it. Throws std::runtime_error.
void makeFolder(const QString& path);

/// Replaces a file whole or not at all, readable by its owner alone. Throws std::runtime_error.
void writePrivateFile(const QString& path, const QByteArray& bytes, QFile::Permissions more = {});

/// What the file holds; nothing when it cannot be read.
QByteArray contentOf(const QString& path);

} // namespace sandbox
