#include "Mounting/MountPointFolder.h"

#include "Mounting/MounterError.h"
#include "System/Tables/MountTable.h"

#include <QFile>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {
constexpr mode_t sealed = S_IRUSR;
}

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
        throw SystemError(path, QString::fromLocal8Bit(error.message().c_str()));

    struct stat status {};

    ::fstat(m_descriptor, &status);
    m_formerMode = status.st_mode & ~static_cast<mode_t>(S_IFMT);
    ::fchmod(m_descriptor, S_IRWXU);
}

MountPointFolder::~MountPointFolder() {
    seal();
}

bool MountPointFolder::holdsFiles(int descriptor) {
    static const std::set<std::string> ignored{".", "..", ".DS_Store", ".directory", ".localized"};
    // Not by its name: a sealed folder cannot be entered, and the path may lead to the server by now.
    const int copy = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    DIR* const folder = ::fdopendir(copy);
    if (!folder) {
        ::close(copy);
        return false;
    }
    bool found = false;
    // Only names are read: in a sealed folder nothing else can be asked of a file.
    while (const dirent* const entry = ::readdir(folder))
        found = found || !ignored.contains(entry->d_name);
    ::closedir(folder);
    return found;
}

void MountPointFolder::seal() {
    if (m_descriptor < 0)
        return;
    ::fchmod(m_descriptor, sealed);
    m_coversFiles = holdsFiles(m_descriptor); // now, because something may have been saved until just before
    ::close(m_descriptor);
    m_descriptor = -1;
}

void MountPointFolder::release(const QString& path, mode_t mode) {
    if (MountTable::lists(path))
        return;
    const int folder = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;

    struct stat status {};

    if (::fstat(folder, &status) == 0 && (status.st_mode & S_IRWXU) == sealed && holdsFiles(folder))
        ::fchmod(folder, mode);
    ::close(folder);
}
