#pragma once

#include <QCoroTask>
#include <QEventLoop>

#include <exception>
#include <optional>
#include <type_traits>

/// Runs the event loop until `task` is done, and yields or throws what it did. (QCoro::waitFor hangs in QCoro
/// 0.8 when a task has failed before it first waited.)
template <typename T>
T await(QCoro::Task<T> task) {
    using Value = std::conditional_t<std::is_void_v<T>, bool, T>;
    std::optional<Value> value;
    std::exception_ptr failure;
    bool done = false;
    QEventLoop loop;
    const auto follow = [&]() -> QCoro::Task<> {
        try {
            if constexpr (std::is_void_v<T>)
                co_await task;
            else
                value = co_await task;
        } catch (...) {
            failure = std::current_exception();
        }
        done = true;
        loop.quit();
    };
    const QCoro::Task<> following = follow();
    if (!done)
        loop.exec();
    if (failure)
        std::rethrow_exception(failure);
    if constexpr (!std::is_void_v<T>)
        return std::move(*value);
}
