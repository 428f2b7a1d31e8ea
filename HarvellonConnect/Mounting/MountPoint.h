#pragma once

#include <QStringList>
#include <QtGlobal>

/// Whether `domain` can be one folder below the mount root and one host name for ssh, and nothing else.
bool isPlainDomain(const QString& domain);

/// The local folder that a tree is mounted on. When sshfs ends, an editor still has the tree open and would
/// save into this folder, so it is writable for mounting alone.
class MountPointFolder {
  public:
    /// Makes the folder and what is missing above it; one that exists is used as it is. It is writable from
    /// now on, until `seal`. Throws MounterError::mountFailed.
    explicit MountPointFolder(const QString& path);
    ~MountPointFolder();
    Q_DISABLE_COPY_MOVE(MountPointFolder)

    /// Whether there are files that a mount would cover. What file managers leave behind does not count.
    [[nodiscard]] bool holdsFiles() const;

    /// Nobody can save into the folder any more, whether or not a tree is mounted on it by now.
    void seal();

  private:
    const QString m_path;
    int m_folder = -1; ///< held open, because the path leads to the server as soon as the tree is mounted
};

/// The names of the folders directly below `root` that have a mount, by the same table as `isListed`.
QStringList mountedBelow(const QString& root);

/// Whether the system's table has a mount at `path`: live, silent or dead. Follows links above the mount
/// point, as the table does, and never touches the mount point itself.
bool isListed(const QString& path);
