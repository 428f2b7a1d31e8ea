#pragma once

#include "Mounting/MountLimits.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QString>

#include <memory>

class FolderCrawl;

/// Fills the cache of one mount, so that the first look of an editor or of git does not wait for a round trip
/// with each name.
///
/// Readers on worker threads list the folders from the root downwards, which lets sshfs answer for every name
/// they contain until `WarmUpLimits::entryLife` has passed. Names that do not exist are not asked for: as
/// long as the kernel remembered them, a file that a colleague makes would be overwritten unseen. Nobody is
/// told how it goes. Main thread.
class WarmUp {
  public:
    WarmUp(QString mountPoint, WarmUpLimits limits);
    /// Cancels.
    ~WarmUp();
    Q_DISABLE_COPY_MOVE(WarmUp)

    /// Starts reading, unless it is under way or the entries of the last time have not expired.
    void start();

    /// Stops reading. A reader holds a folder open until the server has given the answer it waits for, and an
    /// unmount fails so long: the future finishes when the last one has ended.
    QFuture<void> cancel();

  private:
    const QString m_mountPoint;
    const WarmUpLimits m_limits;
    std::shared_ptr<FolderCrawl> m_crawl; ///< of the last start; shared with its readers
    QElapsedTimer m_started;
};
