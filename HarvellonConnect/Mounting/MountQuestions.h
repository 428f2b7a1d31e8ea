#pragma once

#include <QFuture>
#include <QString>

#include <functional>

/// Asks the file system of one mount. A question blocks a thread while the server is silent, and such a
/// thread cannot be stopped, so at most one question per mount is running; the next one starts when it has
/// ended. The answers are futures: whoever asked may wait for a limited time (Async::finishesWithin). Main
/// thread.
class MountQuestions {
  public:
    explicit MountQuestions(QString mountPoint) : m_mountPoint(std::move(mountPoint)) {}

    /// Runs `question` on a worker thread. It may run long after this object has gone, so it must own what it
    /// touches.
    QFuture<bool> ask(const std::function<bool()>& question);

    /// Whether something is mounted at the mount point: a mounted folder lies on another file system than its
    /// parent.
    QFuture<bool> isMounted();

    /// Whether the server answers: asks for a name that nobody has asked for before, which sshfs cannot
    /// answer from its cache.
    QFuture<bool> serverAnswers();

  private:
    /// The running question of that kind, or a new one.
    QFuture<bool> askOnce(QFuture<bool>& running, const std::function<bool()>& question);

    const QString m_mountPoint;
    QFuture<bool> m_last;
    QFuture<bool> m_isMounted;
    QFuture<bool> m_serverAnswers;
};
