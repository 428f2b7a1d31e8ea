#include "System/Async.h"

#include <QCoroTimer>
#include <QDeadlineTimer>

#include <algorithm>

namespace {
constexpr int mostWorkers = 64; // many mounts may each block one thread
}

QThreadPool& Async::workers() {
    static auto* const pool = [] {
        auto* created = new QThreadPool;
        created->setMaxThreadCount(mostWorkers);
        return created;
    }();
    return *pool;
}

QCoro::Task<bool> Async::allFinishWithin(QList<QFuture<void>> futures, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    for (const QFuture<void>& future : futures) {
        const std::chrono::milliseconds left(std::max<qint64>(deadline.remainingTime(), 1));
        const bool finished = co_await finishesWithin(future, left);
        if (!finished)
            co_return false;
    }
    co_return true;
}

QCoro::Task<> Async::sleep(std::chrono::milliseconds duration) {
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer); // a coarse timer may fire early and cut a caller's time budget
    timer.start(duration);
    co_await timer;
}
