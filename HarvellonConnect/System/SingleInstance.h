#pragma once

#include "System/Requests/RequestServer.h"

#include <QLockFile>
#include <QString>

#include <optional>

struct HostSystem;

/// Sees to it that the program runs once for each user and home folder, and takes requests for the one that
/// runs. Main thread.
class SingleInstance {
  public:
    /// The lock lies in the host's private folder, the socket in the folder for sockets.
    explicit SingleInstance(const HostSystem& host);

    /// Whether this process is the one. Otherwise the running one has been asked to show itself.
    [[nodiscard]] bool claim();

    /// What others ask of this process, once it has been claimed.
    [[nodiscard]] RequestServer& requests() { return m_requests; }

  private:
    [[nodiscard]] bool showRunning() const;

    QLockFile m_lock;
    std::optional<QString> m_socket; ///< nothing where others could put something in its place
    RequestServer m_requests;
};
