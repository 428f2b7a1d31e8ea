#pragma once

#include <QObject>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Measures how long the main thread's event loop is blocked: posts a call to it every few milliseconds and
/// keeps the longest delay. Pause it while the benchmark itself works on the main thread.
class LoopWatch {
  public:
    LoopWatch() : m_thread([this] { watch(); }) {}

    ~LoopWatch() {
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    Q_DISABLE_COPY_MOVE(LoopWatch)

    template <typename Work>
    void pausedFor(Work work) {
        setPaused(true);
        work();
        setPaused(false);
    }

    /// The longest delay in milliseconds; `during()` is the step that ran then.
    double longest() const { return m_longest.count(); }

    const char* during() const { return m_during; }

    void setStep(const char* name) { m_step = name; }

  private:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    void setPaused(bool paused) {
        const std::lock_guard lock(m_mutex);
        m_paused = paused;
        ++m_pauses; // a call that was posted before does not count
    }

    void watch() {
        constexpr std::chrono::milliseconds step{2};
        std::unique_lock lock(m_mutex);
        while (!m_stopping) {
            m_answered = m_paused;
            if (!m_paused) {
                const auto asked = std::chrono::steady_clock::now();
                QMetaObject::invokeMethod(&m_context,
                                          [this, asked, pauses = m_pauses] { answer(asked, pauses); });
            }
            m_changed.wait(lock, [this] { return m_answered || m_stopping; });
            m_changed.wait_for(lock, step, [this] { return m_stopping; });
        }
    }

    void answer(std::chrono::steady_clock::time_point asked, int pauses) {
        const std::lock_guard lock(m_mutex);
        m_answered = true;
        const Milliseconds away = std::chrono::steady_clock::now() - asked;
        if (pauses == m_pauses && away > m_longest) {
            m_longest = away;
            m_during = m_step;
        }
        m_changed.notify_all();
    }

    QObject m_context; ///< drops the calls that are still posted at the end
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopping = false;
    bool m_paused = false;
    bool m_answered = true;
    int m_pauses = 0;
    Milliseconds m_longest{0};
    const char* m_step = ""; ///< main thread only
    const char* m_during = "";
    std::thread m_thread;
};
