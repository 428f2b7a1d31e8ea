#pragma once

#include "sandbox/Faults.h"
#include "sandbox/Identities.h"
#include "sandbox/TokenLedger.h"

#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

namespace sandbox {

/// The identity server and the directory over HTTP, on 127.0.0.1 only. Answers on threads of its own from its
/// construction to its destruction; what it is given must live as long.
class WebServer {
  public:
    /// `treeRoot`: the folder of the project trees. `portFile`: remembers the port, which is taken again when
    /// it is free. Throws std::runtime_error.
    WebServer(const QList<Identity>& identities, TokenLedger& ledger, Faults& faults, QString treeRoot,
              const QString& portFile);
    ~WebServer();
    Q_DISABLE_COPY_MOVE(WebServer)

    [[nodiscard]] int port() const { return m_port; }

  private:
    void route();
    void listen(const QString& portFile);
    void authorize(const httplib::Request& request, httplib::Response& response);
    void token(const httplib::Request& request, httplib::Response& response);
    void directory(const httplib::Request& request, httplib::Response& response);
    void takeFaults(const httplib::Request& request, httplib::Response& response);

    const QList<Identity>& m_identities;
    TokenLedger& m_ledger;
    Faults& m_faults;
    const QString m_treeRoot;
    int m_port = 0;
    std::atomic<bool> m_stopping = false;
    std::unique_ptr<httplib::Server> m_server;
    std::thread m_thread;
};

} // namespace sandbox
