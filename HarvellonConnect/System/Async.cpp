#include "System/Async.h"

#include <QCoroTimer>

namespace {
constexpr int mostWorkers = 64; // ten mounts at once, each with a stuck question, leave room
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
    timer.setTimerType(
        Qt::PreciseTimer); // a coarse one may come early, and who waits for a budget waits it out
    timer.start(duration);
    co_await timer;
}
