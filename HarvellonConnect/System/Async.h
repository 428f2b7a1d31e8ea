#pragma once

#include <QCoroFuture>
#include <QCoroSignal>
#include <QCoroTask>
#include <QCoroTimer>
#include <QFuture>
#include <QFutureWatcher>
#include <QList>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrentRun>

#include <chrono>
#include <functional>
#include <optional>

/// Waiting for work, for a time, or for both. Main thread, unless said otherwise.
namespace Async {

constexpr std::chrono::milliseconds noLimit{0};

/// The threads for work that may block. The pool is never destroyed, because waiting for a thread that hangs
/// on a dead mount would keep the program from ending.
QThreadPool& workers();

/// Suspends the caller for at least `duration`.
QCoro::Task<> sleep(std::chrono::milliseconds duration);

/// Whether `object` emits `signal` before `limit` passes. QCoro's own wait for a signal is over with the
/// first emission, and crashes at a second one that comes before the waiter has gone on; here a timer is
/// waited for, which the signal brings to its end. The object may have gone when this returns.
template <typename T, typename Signal>
QCoro::Task<bool> emission(T* object, Signal signal, std::chrono::milliseconds limit = noLimit) {
    QTimer wait;
    wait.setSingleShot(true);
    bool emitted = false;
    QObject::connect(object, signal, &wait, [&wait, &emitted] {
        emitted = true;
        wait.start(0);
    });
    constexpr std::chrono::hours longest{24 * 20}; // a timer that does not run would not be waited for
    wait.start(limit == noLimit ? longest : limit);
    co_await wait;
    co_return emitted;
}

/// Whether `future` finishes before `limit` passes. The future itself goes on either way.
template <typename T>
QCoro::Task<bool> finishesWithin(QFuture<T> future, std::chrono::milliseconds limit) {
    if (future.isFinished())
        co_return true;
    QFutureWatcher<T> watcher;
    watcher.setFuture(future);
    const auto finished = co_await qCoro(&watcher, &QFutureWatcherBase::finished, limit);
    co_return finished.has_value();
}

/// Whether all of them finish before `limit` passes.
QCoro::Task<bool> allFinishWithin(QList<QFuture<void>> futures, std::chrono::milliseconds limit);

/// Runs `work` on a worker thread and yields its result, or nothing when `limit` passes first. Work that is
/// late goes on and its result is dropped, so it must own all that it touches.
template <typename T>
QCoro::Task<std::optional<T>> onWorker(std::function<T()> work, std::chrono::milliseconds limit = noLimit,
                                       QThreadPool& pool = workers()) {
    QFuture<T> future = QtConcurrent::run(&pool, std::move(work));
    if (limit != noLimit) {
        const bool finished = co_await finishesWithin(future, limit);
        if (!finished)
            co_return std::nullopt;
    }
    co_return co_await future;
}

} // namespace Async
