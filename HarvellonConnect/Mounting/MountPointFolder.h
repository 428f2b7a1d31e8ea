#pragma once

#include <QString>
#include <QtGlobal>

#include <sys/types.h>

/// The local folder that a tree is mounted on. When sshfs ends, an editor that still has the tree open would
/// save into this local folder, so it is sealed except while a mount is being made: nothing can be saved into
/// it, and no file below it can be reached. Main thread.
class MountPointFolder {
  public:
    /// Makes the folder and its missing parents, or uses the one that exists, and makes it writable until
    /// `seal`. Throws SystemError.
    explicit MountPointFolder(const QString& path);
    ~MountPointFolder();
    Q_DISABLE_COPY_MOVE(MountPointFolder)

    /// Whether the folder had files when it was sealed, which a mount hides now. The files that file managers
    /// add by themselves do not count.
    [[nodiscard]] bool coversFiles() const { return m_coversFiles; }

    /// The permissions that the folder had before.
    [[nodiscard]] mode_t formerMode() const { return m_formerMode; }

    /// Seals the local folder, whether or not a tree is mounted on it by now.
    void seal();

    /// Gives the sealed folder at `path` permissions back when it holds files of the user, who could not
    /// reach them otherwise. Does nothing while something is mounted there, or when the folder is empty. Only
    /// for a folder in which no program works any more.
    static void release(const QString& path, mode_t mode);

  private:
    static bool holdsFiles(int descriptor);

    const QString m_path;
    mode_t m_formerMode = 0;
    bool m_coversFiles = false;
    int m_descriptor = -1; ///< kept open, because the path leads to the server once the tree is mounted
};
