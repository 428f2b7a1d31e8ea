#include "System/Async.h"

#include <QCoroTimer>

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

QCoro::Task<> Async::sleep(std::chrono::milliseconds duration) {
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer); // a coarse timer may fire early and cut a caller's time budget
    timer.start(duration);
    co_await timer;
}
