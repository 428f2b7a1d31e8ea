#pragma once

#include "sandbox/Faults.h"

#include <QString>

#include <atomic>
#include <memory>
#include <thread>

namespace httplib {
class SSLServer;
} // namespace httplib

namespace sandbox {

/// The projects' web sites over https, on 127.0.0.1 only: one server that answers every path, with a
/// self-signed certificate. Serves on its own threads from construction to destruction.
class Sites {
  public:
    /// `folder`: for the certificate, which is made where there is none. `faults` lives as long. Throws
    /// std::runtime_error.
    Sites(const QString& folder, Faults& faults);
    ~Sites();
    Q_DISABLE_COPY_MOVE(Sites)

    [[nodiscard]] int port() const { return m_port; }

    /// A PEM file.
    [[nodiscard]] QString certificate() const { return m_folder + QStringLiteral("/site.crt"); }

  private:
    const QString m_folder;
    int m_port = 0;
    std::atomic<bool> m_stopping = false;
    std::unique_ptr<httplib::SSLServer> m_server;
    std::thread m_thread;
};

} // namespace sandbox
