#include "Mounting/MountPoint.h"

#include "Mounting/MounterError.h"
#include "System/Native/MountTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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

MountPointFolder::MountPointFolder(const QString& path) : m_path(path) {
    const QByteArray name = QFile::encodeName(path);
    std::error_code error;
    std::filesystem::create_directories(name.toStdString(), error);
    if (!error) {
        m_folder = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (m_folder < 0)
            error.assign(errno, std::generic_category());
    }
    if (error)
        throw MounterError(
            MounterError::Case::mountFailed,
            QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(error.message().c_str())));
    ::fchmod(m_folder, S_IRWXU);
}

MountPointFolder::~MountPointFolder() {
    seal();
}

bool MountPointFolder::holdsFiles() const {
    const QStringList leftBehind{QStringLiteral(".DS_Store"), QStringLiteral(".directory"),
                                 QStringLiteral(".localized")};
    const QStringList entries =
        QDir(m_path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return std::any_of(entries.begin(), entries.end(),
                       [&leftBehind](const QString& entry) { return !leftBehind.contains(entry); });
}

void MountPointFolder::seal() {
    if (m_folder < 0)
        return;
    ::fchmod(m_folder, S_IRUSR | S_IXUSR);
    ::close(m_folder);
    m_folder = -1;
}

bool isListed(const QString& path) {
    const QFileInfo mountPoint(path);
    const QString folder = QFileInfo(mountPoint.path()).canonicalFilePath();
    return !folder.isEmpty() && MountTable::lists(QDir(folder).filePath(mountPoint.fileName()));
}

QStringList mountedBelow(const QString& root) {
    QStringList names;
    const QFileInfo existing(root);
    if (!existing.exists())
        return names;
    const QString folder = existing.canonicalFilePath() + QLatin1Char('/');
    for (const QString& path : MountTable::mountPoints()) {
        if (path.startsWith(folder) && path.indexOf(QLatin1Char('/'), folder.size()) < 0)
            names.append(path.mid(folder.size()));
    }
    return names;
}
