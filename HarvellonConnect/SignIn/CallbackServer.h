#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTcpServer>

class QTcpSocket;

/// The one-shot listener on 127.0.0.1 that a browser is sent back to.
///
///     listening ──first request with data──▶ answered, port closed, ended() with its parameters
///         └──────cancel()──────────────────▶ port closed, ended() as cancelled
///
/// Every request that arrives is answered with the same page; the first one ends the listening. Main thread.
class CallbackServer : public QObject {
    Q_OBJECT

  public:
    struct Outcome {
        bool cancelled = false;
        QHash<QString, QString> parameters; ///< of the request's query
    };

    /// `answer`: the whole HTTP answer that each request gets.
    explicit CallbackServer(QByteArray answer, QObject* parent = nullptr);

    /// Opens a port chosen by the system and returns it. Throws OAuthError::listenerFailed.
    quint16 start();
    /// Closes the port. Answers under way are still delivered. Does nothing when the listening has ended.
    void cancel();

  Q_SIGNALS:
    void ended(CallbackServer::Outcome outcome);

  private:
    void accept();
    void answer(QTcpSocket* socket);
    void end(const Outcome& outcome);

    QByteArray m_answer;
    QTcpServer m_server;
};
