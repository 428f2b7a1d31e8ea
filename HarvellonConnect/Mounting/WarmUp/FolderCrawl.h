#pragma once

#include "Mounting/MountLimits.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFuture>
#include <QPromise>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

/// One walk through the folders of a mount by several readers. All operations may be called from any thread.
///
///     folders to list ──each reader takes one, and adds what it finds below──▶ none left, nobody listing:
///     the end
///                       limit reached, or stopped ──────────────────────────▶ the end
class FolderCrawl {
  public:
    FolderCrawl(QByteArray root, WarmUpLimits limits);

    /// Takes part until the walk is over. Blocks; each worker thread calls it once.
    void read();

    /// Ends the walk; whoever reads returns with the answer it is waiting for.
    void stop();

    [[nodiscard]] bool wasStopped() const;
    /// Whether nobody reads any more, and nobody will.
    [[nodiscard]] bool isOver() const;

    /// Finishes when nobody reads any more.
    [[nodiscard]] QFuture<void> end() const { return m_end.future(); }

  private:
    bool join();
    void leave();
    std::optional<QByteArray> next();
    [[nodiscard]] bool isStopped() const;
    void list(const QByteArray& folder);
    void add(std::vector<QByteArray> found);

    const WarmUpLimits m_limits;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_waiting;
    std::size_t m_folders = 1; ///< found so far
    int m_listing = 0;
    int m_reading = 0;
    std::optional<QDeadlineTimer> m_deadline; ///< from the first reader's start
    bool m_stopped = false;
    bool m_over = false;
    QPromise<void> m_end;
};
