#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>

/// Tells before the system falls asleep and after it has woken up, and holds sleep back for a moment between
/// the two, so that work can be finished. Main thread.
///
///     awake ── aboutToSleep ──▶ preparing ── allowSleep, or the limit ──▶ asleep
///       ▲                           │ called off                            │
///       └───────── wokeUp ──────────┴───────────────────────────────────────┘
///
/// `aboutToSleep` comes once for each sleep. `wokeUp` may come alone, when the program started while the
/// system was falling asleep. It also comes when the login manager ends after it announced sleep, because
/// nobody would announce the waking.
class SleepMonitor : public QObject {
    Q_OBJECT

  public:
    /// Starts watching. Without a login manager nothing is ever told; one that starts later is found.
    /// `limit`: how long sleep is held back at most; systems wait a few seconds for all programs together.
    explicit SleepMonitor(QObject* parent = nullptr,
                          std::chrono::milliseconds limit = std::chrono::seconds(2));
    /// Lets the system sleep.
    ~SleepMonitor() override;

    /// Lets the system sleep; call it when what `aboutToSleep` asked for is done, or from inside of it.
    /// Happens by itself after the limit. Does nothing at other times.
    void allowSleep();

  Q_SIGNALS:
    void aboutToSleep();
    void wokeUp();

  private:
    struct Native;
    enum class Phase { Awake, Preparing, Asleep };

    // Shared.
    void setLimit(std::chrono::milliseconds limit);
    void prepareForSleep();
    void wakeUp();
    // Each desktop's own.
    void letSystemSleep();

    Phase m_phase = Phase::Awake;
    QTimer m_limit;
    std::unique_ptr<Native> m_native;
};
