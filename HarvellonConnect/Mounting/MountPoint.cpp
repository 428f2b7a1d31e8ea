#include "Mounting/MountPoint.h"

#include "Mounting/MounterError.h"
#include "System/MountTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {
// What is not part of a host name but means something to the file system, to sshfs, or to a shell that a
// user's own ssh configuration hands the host name to.
const QString refused = QStringLiteral("/\\:@[](){}<>|&;$`'\"");
} // namespace

bool isPlainDomain(const QString& domain) {
    if (domain.isEmpty() || domain.startsWith(QLatin1Char('-')) || domain == QLatin1String(".") ||
        domain == QLatin1String(".."))
        return false;
    return std::all_of(domain.begin(), domain.end(), [](QChar character) {
        return !character.isSpace() && character.category() != QChar::Other_Control &&
               character.category() != QChar::Other_Format && !refused.contains(character);
    });
}

void makeMountPoint(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error)
        throw MounterError(
            MounterError::Case::mountFailed,
            QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(error.message().c_str())));
}

bool isListed(const QString& path) {
    const QFileInfo mountPoint(path);
    const QString folder = QFileInfo(mountPoint.path()).canonicalFilePath();
    return !folder.isEmpty() && MountTable::lists(QDir(folder).filePath(mountPoint.fileName()));
}
