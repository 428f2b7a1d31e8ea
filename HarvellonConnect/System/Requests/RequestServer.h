#pragma once

#include "System/Requests/Request.h"

#include <QCoroTask>
#include <QLocalServer>
#include <QObject>

#include <chrono>
#include <functional>

struct RequestLimits {
    std::chrono::milliseconds request{2000}; ///< from the connection to the whole request
    std::chrono::milliseconds reading{5000}; ///< in which the client reads nothing of the answer
    int connections = 32;
};

/// Takes requests of this user's programs: one from each connection.
///
///     connection ──▶ another user, or too many of them ──▶ refused
///         └─ a line within the limits ──▶ handler ──▶ answer ──▶ closed
///                 └─ too long, too late, no request ──▶ error ──▶ closed
///
/// A client that leaves ends nothing of what it has begun. Main thread.
class RequestServer : public QObject {
    Q_OBJECT

  public:
    using Handler = std::function<QCoro::Task<Answer>(Request request)>;

    explicit RequestServer(RequestLimits limits = {}, QObject* parent = nullptr);

    /// Listens at `socket`, in place of a program that has been killed. Yields whether that is possible.
    [[nodiscard]] bool listen(const QString& socket);

    /// Who answers. Whatever it throws becomes the answer. Until there is one, clients are told to wait.
    void setHandler(Handler handler) { m_handler = std::move(handler); }

  private:
    void accept();
    QCoro::Task<Answer> answerTo(QByteArray line);

    const RequestLimits m_limits;
    Handler m_handler;
    QLocalServer m_server;
    int m_connections = 0;
};
