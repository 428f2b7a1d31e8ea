#pragma once

#include <QCoreApplication>
#include <QCoroFuture>
#include <QCoroTask>
#include <QFuture>
#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

/// What everything that waits is built from. Main thread, unless said otherwise.
namespace Async {

constexpr std::chrono::milliseconds noLimit{0};

/// The threads for work that may block. Never destroyed: a thread that hangs on a dead mount would keep the
/// program from ending.
QThreadPool& workers();

/// Suspends the caller for `duration`.
QCoro::Task<> sleep(std::chrono::milliseconds duration);

/// Runs `work` on a worker thread and yields its result, or nothing when `limit` passes first. Work that is
/// late goes on and its result is dropped, so it must own all that it touches.
template <typename T>
QCoro::Task<std::optional<T>> onWorker(std::function<T()> work, std::chrono::milliseconds limit = noLimit) {
    auto promise = std::make_shared<QPromise<std::optional<T>>>();
    promise->start();
    QFuture<std::optional<T>> future = promise->future();
    const auto settle = [promise](std::optional<T> result) {
        if (promise->future().isFinished())
            return;
        promise->addResult(std::move(result));
        promise->finish();
    };
    workers().start([work = std::move(work), settle] {
        auto result = std::make_shared<T>(work());
        if (QCoreApplication* app = QCoreApplication::instance())
            QMetaObject::invokeMethod(app, [settle, result] { settle(std::move(*result)); });
    });
    if (limit != noLimit)
        QTimer::singleShot(limit, QCoreApplication::instance(), [settle] { settle(std::nullopt); });
    co_return co_await future;
}

/// Whether `future` finishes before `limit` passes. The future itself goes on either way.
template <typename T>
QCoro::Task<bool> finishesWithin(QFuture<T> future, std::chrono::milliseconds limit) {
    if (future.isFinished())
        co_return true;
    auto promise = std::make_shared<QPromise<bool>>();
    promise->start();
    QFuture<bool> settled = promise->future();
    auto* const watcher = new QFutureWatcher<T>;
    const auto settle = [promise, watcher](bool finished) {
        if (promise->future().isFinished())
            return;
        promise->addResult(finished);
        promise->finish();
        watcher->deleteLater();
    };
    QObject::connect(watcher, &QFutureWatcherBase::finished, watcher, [settle] { settle(true); });
    QTimer::singleShot(limit, watcher, [settle] { settle(false); });
    watcher->setFuture(future);
    co_return co_await settled;
}

} // namespace Async
