#pragma once

#include "System/Requests/Request.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

/// The side of a conversation that asks. Plain system calls: the command line answers in a few milliseconds,
/// because it loads no library for the network and has no event loop. Blocks its thread.
class RequestClient {
  public:
    /// Connects to the program behind the socket; nothing where none runs. Never waits for it. Ignores
    /// SIGPIPE from then on: a program that has gone is no reason to be killed.
    static std::optional<RequestClient> to(const QString& socket);

    RequestClient(RequestClient&& other) noexcept;
    RequestClient& operator=(RequestClient&& other) noexcept;
    Q_DISABLE_COPY(RequestClient)
    ~RequestClient();

    /// Whether the request is on its way.
    [[nodiscard]] bool send(const Request& request);

    /// Waits for the answer, for `limit`. `goOn` is asked each second and after each signal, with the time
    /// that has passed. Nothing when it says no, the time is over, or the program has gone.
    [[nodiscard]] std::optional<Answer> receive(std::chrono::milliseconds limit,
                                                const std::function<bool(std::chrono::milliseconds)>& goOn);

  private:
    explicit RequestClient(int socket) : m_socket(socket) {}

    int m_socket;
};
