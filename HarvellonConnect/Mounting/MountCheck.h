#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QString>

#include <chrono>
#include <optional>

/// Checks with the server whether something is mounted at a path: a mounted folder lies on another file
/// system than its parent. The check blocks while the server is silent, so it runs on a worker thread, and at
/// most one check per object is running: after a time-out the next call waits for the same one. Main thread.
class MountCheck {
  public:
    explicit MountCheck(QString path) : m_path(std::move(path)) {}

    /// Whether something is mounted, or nothing when the server has not answered within `limit`. One call at
    /// a time, and the object must outlive the call.
    QCoro::Task<std::optional<bool>> isMounted(std::chrono::milliseconds limit);

  private:
    QString m_path;
    std::optional<QFuture<bool>> m_running;
};
