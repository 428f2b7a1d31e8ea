#pragma once

#include <QCoroSignal>
#include <QCoroTask>
#include <QObject>
#include <QTimer>

#include <chrono>

/// Waits until `object` emits `signal`, for `limit`, or until the object has gone. QCoro's own wait for a
/// signal is over with the first emission, and crashes at a second one that follows before the caller has
/// gone on; here a timer of our own is waited for, which the signal brings to its end. Main thread.
template <typename T, typename Signal>
QCoro::Task<> emission(T* object, Signal signal, std::chrono::milliseconds limit) {
    QTimer wait;
    wait.setSingleShot(true);
    QObject::connect(object, signal, &wait, [&wait] { wait.start(0); });
    wait.start(limit);
    co_await qCoro(&wait, &QTimer::timeout);
}
