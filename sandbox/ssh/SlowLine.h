#pragma once

#include <QtGlobal>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

namespace sandbox {

/// A line to a server of this machine, with the delay and the speed of a real one: forwards TCP connections
/// to 127.0.0.1. Works on a thread of its own; any thread may call it.
class SlowLine {
  public:
    struct Quality {
        std::chrono::milliseconds delay{0}; ///< one way
        qint64 bytesPerSecond = 0;          ///< each way; 0 for no limit
    };

    /// Throws std::runtime_error when it cannot listen.
    explicit SlowLine(int serverPort);
    /// Cuts all connections.
    ~SlowLine();
    Q_DISABLE_COPY_MOVE(SlowLine)

    [[nodiscard]] int port() const { return m_port; }

    void setQuality(const Quality& quality);

    /// The connections that exist now stand for ever and carry nothing; later ones work.
    void freezeConnections();
    void thawConnections();

  private:
    struct Connection;
    void work();
    void wake() const;

    const int m_serverPort;
    int m_port = 0;
    int m_listener = -1;
    int m_wakeRead = -1;
    int m_wakeWrite = -1;
    std::mutex m_mutex;
    Quality m_quality;
    bool m_freeze = false;
    bool m_thaw = false;
    std::atomic<bool> m_stopping = false;
    std::thread m_thread;
};

} // namespace sandbox
