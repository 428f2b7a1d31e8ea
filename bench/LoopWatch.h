#pragma once

#include <QObject>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Asks the main thread's event loop every few milliseconds whether it is there, and remembers the longest
/// wait for an answer. What a test does itself on the main thread is no business of the program's: pause
/// meanwhile.
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

    /// In milliseconds. The name is of what ran when the loop was away longest.
    double longest() const { return m_longest.count(); }

    const char* during() const { return m_during; }

    void setStep(const char* name) { m_step = name; }

  private:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    void setPaused(bool paused) {
        const std::lock_guard lock(m_mutex);
        m_paused = paused;
        ++m_pauses; // a question that was under way does not count
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

    QObject m_context; ///< drops the questions that are left at the end
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopping = false;
    bool m_paused = false;
    bool m_answered = true;
    int m_pauses = 0;
    Milliseconds m_longest{0};
    const char* m_step = ""; ///< main thread, as all that is read from outside
    const char* m_during = "";
    std::thread m_thread;
};
