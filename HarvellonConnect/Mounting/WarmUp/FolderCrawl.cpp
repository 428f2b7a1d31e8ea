#include "Mounting/WarmUp/FolderCrawl.h"

#include <algorithm>
#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {
/// In bytes, as file systems count a folder: some thousands of names. sshfs fetches a folder in one request,
/// which nothing can stop and which fills a slow line.
constexpr off_t largestFolder = 256 * 1024;

/// Large, and nobody reads them name by name.
constexpr std::array foldersToLeaveOut{"node_modules", "cache", ".cache", "caches", "tmp", "temp"};

bool isLeftOut(const QByteArray& folder, const char* name) {
    return (folder.endsWith("/.git") && qstrcmp(name, "objects") == 0) ||
           std::any_of(foldersToLeaveOut.begin(), foldersToLeaveOut.end(),
                       [name](const char* each) { return qstricmp(name, each) == 0; });
}

/// Whether `entry` is a folder that can be read in a moment. sshfs knows that from the listing.
bool isSmallFolder(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_DIR)
        return false;

    struct stat status {};

    return ::fstatat(::dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode) && status.st_size <= largestFolder;
}
} // namespace

FolderCrawl::FolderCrawl(QByteArray root, WarmUpLimits limits)
    : m_limits(limits), m_waiting{std::move(root)} {
    m_end.start();
}

void FolderCrawl::read() {
    if (!join())
        return;
    while (const std::optional<QByteArray> folder = next())
        list(*folder);
    leave();
}

bool FolderCrawl::join() {
    const std::lock_guard lock(m_mutex);
    if (m_stopped || m_over)
        return false;
    if (!m_deadline)
        m_deadline.emplace(m_limits.time);
    ++m_reading;
    return true;
}

void FolderCrawl::leave() {
    const std::lock_guard lock(m_mutex);
    if (--m_reading > 0)
        return;
    m_over = true;
    m_end.finish();
}

void FolderCrawl::stop() {
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
    if (m_reading > 0 || m_over)
        return;
    m_over = true;
    m_end.finish();
}

bool FolderCrawl::wasStopped() const {
    const std::lock_guard lock(m_mutex);
    return m_stopped;
}

bool FolderCrawl::isOver() const {
    const std::lock_guard lock(m_mutex);
    return m_over;
}

bool FolderCrawl::isStopped() const {
    return m_stopped || m_deadline->hasExpired();
}

std::optional<QByteArray> FolderCrawl::next() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return isStopped() || !m_waiting.empty() || m_listing == 0; });
    if (isStopped() || m_waiting.empty())
        return std::nullopt;
    QByteArray folder = std::move(m_waiting.front());
    m_waiting.pop_front();
    ++m_listing;
    return folder;
}

void FolderCrawl::list(const QByteArray& folder) {
    std::vector<QByteArray> found;
    if (DIR* const directory = ::opendir(folder.constData())) {
        while (const dirent* const entry = ::readdir(directory)) {
            if (qstrcmp(entry->d_name, ".") != 0 && qstrcmp(entry->d_name, "..") != 0 &&
                isSmallFolder(directory, *entry) && !isLeftOut(folder, entry->d_name))
                found.push_back(folder + '/' + entry->d_name);
        }
        ::closedir(directory);
    }
    add(std::move(found));
}

void FolderCrawl::add(std::vector<QByteArray> found) {
    const std::lock_guard lock(m_mutex);
    --m_listing;
    for (QByteArray& folder : found) {
        if (m_folders == m_limits.folders)
            break;
        ++m_folders;
        m_waiting.push_back(std::move(folder));
    }
    m_changed.notify_all();
}
