#include "Mounting/MountPointFolder.h"

#include "Mounting/MounterError.h"
#include "System/Tables/MountTable.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
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
    const std::set<std::string> addedByFileManagers{".DS_Store", ".directory", ".localized"};
    std::error_code error;
    // Only names are read: in a sealed folder nothing else can be asked of a file.
    std::filesystem::directory_iterator entries(QFile::encodeName(path).toStdString(), error);
    return std::any_of(begin(entries), end(entries), [&addedByFileManagers](const auto& entry) {
        return !addedByFileManagers.contains(entry.path().filename().string());
    });
}

void MountPointFolder::seal() {
    if (m_descriptor < 0)
        return;
    ::fchmod(m_descriptor, S_IRUSR);
    ::close(m_descriptor);
    m_descriptor = -1;
}

void MountPointFolder::release(const QString& path, mode_t mode) {
    if (!MountTable::lists(path) && holdsFiles(path))
        ::chmod(QFile::encodeName(path).constData(), mode);
}
