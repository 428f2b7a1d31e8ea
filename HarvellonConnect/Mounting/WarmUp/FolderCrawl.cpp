#include "Mounting/WarmUp/FolderCrawl.h"

#include <algorithm>
#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {
/// What git and search tools look for in every folder. In the order of what each one saved when it was
/// measured, because time may run out.
constexpr std::array namesToAskFor{".gitignore", ".ignore", ".rgignore", ".git"};

/// Large, and nobody reads them name by name.
constexpr std::array foldersToLeaveOut{"node_modules", "cache", ".cache", "caches", "tmp", "temp"};

bool isLeftOut(const QByteArray& folder, const char* name) {
    return (folder.endsWith("/.git") && qstrcmp(name, "objects") == 0) ||
           std::any_of(foldersToLeaveOut.begin(), foldersToLeaveOut.end(),
                       [name](const char* each) { return qstricmp(name, each) == 0; });
}

bool isFolder(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;

    struct stat status {};

    return ::fstatat(::dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}
} // namespace

FolderCrawl::FolderCrawl(QByteArray root, WarmUpLimits limits)
    : m_limits(limits), m_waiting{std::move(root)} {
    m_end.start();
}

void FolderCrawl::read() {
    if (!join())
        return;
    while (const std::optional<Step> step = next()) {
        if (step->list) {
            list(step->path);
        } else {
            struct stat status {};

            ::lstat(step->path.constData(), &status); // the kernel remembers the answer
        }
    }
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

std::optional<FolderCrawl::Step> FolderCrawl::next() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return isStopped() || !m_waiting.empty() || m_listing == 0; });
    if (isStopped())
        return std::nullopt;
    if (m_waiting.empty())
        return nextName();
    const QByteArray folder = m_waiting.front();
    m_waiting.pop_front();
    if (!folder.contains("/.git/"))
        m_listed.push_back(folder);
    ++m_listing;
    return Step{folder, true};
}

std::optional<FolderCrawl::Step> FolderCrawl::nextName() {
    if (m_asked == m_listed.size() * namesToAskFor.size())
        return std::nullopt;
    const char* const name = namesToAskFor.at(m_asked / m_listed.size());
    const QByteArray& folder = m_listed.at(m_asked % m_listed.size());
    ++m_asked;
    return Step{folder + '/' + name, false};
}

void FolderCrawl::list(const QByteArray& folder) {
    std::vector<QByteArray> found;
    if (DIR* const directory = ::opendir(folder.constData())) {
        while (const dirent* const entry = ::readdir(directory)) {
            if (qstrcmp(entry->d_name, ".") != 0 && qstrcmp(entry->d_name, "..") != 0 &&
                isFolder(directory, *entry) && !isLeftOut(folder, entry->d_name))
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
