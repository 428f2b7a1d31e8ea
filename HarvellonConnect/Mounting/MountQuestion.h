#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QString>

#include <chrono>
#include <optional>

/// The question whether something is mounted at a path: a mounted folder lies on another file system than its
/// parent. Only the server can answer it, so it is put on a worker thread, and a question that has no answer
/// yet is waited for again instead of being put a second time. Main thread.
class MountQuestion {
  public:
    explicit MountQuestion(QString path) : m_path(std::move(path)) {}

    /// The answer, or nothing while there is none after `limit`. One caller at a time, and this must outlive
    /// it.
    QCoro::Task<std::optional<bool>> answer(std::chrono::milliseconds limit);

  private:
    QString m_path;
    std::optional<QFuture<bool>> m_pending;
};
