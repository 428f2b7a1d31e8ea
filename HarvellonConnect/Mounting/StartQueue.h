#pragma once

#include <algorithm>
#include <chrono>

/// Spreads the starts of sshfs over time, one per interval. Main thread.
class StartQueue {
  public:
    using Clock = std::chrono::steady_clock;

    explicit StartQueue(std::chrono::milliseconds interval) : m_interval(interval) {}

    /// The time at which the caller may start its sshfs; later callers get later times.
    [[nodiscard]] Clock::time_point nextTurn() {
        const Clock::time_point turn = std::max(Clock::now(), m_nextTurn);
        m_nextTurn = turn + m_interval;
        return turn;
    }

  private:
    const std::chrono::milliseconds m_interval;
    Clock::time_point m_nextTurn;
};
