#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QLocalSocket>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

struct Answer;

/// One connection of a client: reads its request, writes the answer, and deletes itself with the connection.
/// Main thread.
class RequestPeer : public QObject {
    Q_OBJECT

  public:
    using AnswerTo = std::function<QCoro::Task<Answer>(QByteArray line)>;

    /// Takes `socket` over. `requestLimit`: until the request must be here; `readingLimit`: in which
    /// the client must have read some more of the answer.
    RequestPeer(QLocalSocket* socket, AnswerTo answerTo, std::chrono::milliseconds requestLimit,
                std::chrono::milliseconds readingLimit);

  private:
    void read();
    QCoro::Task<> answer();

    QLocalSocket* const m_socket;
    const AnswerTo m_answerTo;
    const std::chrono::milliseconds m_readingLimit;
    QTimer m_limit;
    QByteArray m_line;
    bool m_asked = false;
};
