#include "Mounting/MountPointFolder.h"

#include "Mounting/MounterError.h"
#include "System/Tables/MountTable.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

MountPointFolder::MountPointFolder(const QString& path) : m_path(path) {
    const QByteArray name = QFile::encodeName(path);
    std::error_code error;
    std::filesystem::create_directories(name.toStdString(), error);
    if (!error) {
        m_descriptor = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (m_descriptor < 0)
            error.assign(errno, std::generic_category());
    }
    if (error)
        throw MounterError(
            MounterError::Case::mountFailed,
            QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(error.message().c_str())));

    struct stat status {};

    ::fstat(m_descriptor, &status);
    m_formerMode = status.st_mode & ~static_cast<mode_t>(S_IFMT);
    ::fchmod(m_descriptor, S_IRWXU);
}

MountPointFolder::~MountPointFolder() {
    seal();
}

bool MountPointFolder::holdsFiles(const QString& path) {
    const QStringList addedByFileManagers{QStringLiteral(".DS_Store"), QStringLiteral(".directory"),
                                          QStringLiteral(".localized")};
    const QStringList entries =
        QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return std::any_of(entries.begin(), entries.end(), [&addedByFileManagers](const QString& entry) {
        return !addedByFileManagers.contains(entry);
    });
}

void MountPointFolder::seal() {
    if (m_descriptor < 0)
        return;
    ::fchmod(m_descriptor, S_IRUSR | S_IXUSR);
    ::close(m_descriptor);
    m_descriptor = -1;
}

void MountPointFolder::release(const QString& path, mode_t mode) {
    if (!MountTable::lists(path) && holdsFiles(path))
        ::chmod(QFile::encodeName(path).constData(), mode | S_IRWXU);
}
