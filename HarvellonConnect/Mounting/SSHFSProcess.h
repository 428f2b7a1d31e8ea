#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QFuture>
#include <QObject>
#include <QProcess>
#include <QPromise>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

/// One sshfs in the foreground, with the ssh that it starts: both in a session of their own, so that a key
/// press in a terminal does not reach them and neither is left behind. Destroying this neither waits for
/// sshfs nor ends it. Main thread.
class SSHFSProcess : public QObject {
    Q_OBJECT

  public:
    SSHFSProcess();
    ~SSHFSProcess() override;

    /// Starts it, once. Where that fails it soon runs no more and `startFailure` says why.
    void start(const QString& executable, const QStringList& arguments);

    [[nodiscard]] bool isRunning() const { return m_process->state() != QProcess::NotRunning; }

    /// Finished when it has ended, or could not be started.
    [[nodiscard]] QFuture<void> end() const { return m_end.future(); }

    [[nodiscard]] QString startFailure() const { return m_startFailure; }

    /// The end of what it wrote to standard error, trimmed; empty when it is not valid UTF-8.
    [[nodiscard]] QString errorText() const;

    /// Asks it to end.
    void hangUp();
    /// Kills it and its ssh. Nothing less frees whoever waits for an answer of a silent server.
    void kill();
    /// Asks it to end and kills it where it has not ended after `grace`. Yields when it has ended, or after a
    /// few seconds where not even that helps.
    static QCoro::Task<> terminate(std::shared_ptr<SSHFSProcess> process, std::chrono::milliseconds grace);

  Q_SIGNALS:
    void ended(qint32 exitCode);

  private:
    void drain();

    QProcess* m_process; ///< not a child object: deletes itself after its end
    QPromise<void> m_end;
    qint64 m_group = 0;
    QString m_startFailure;
    QByteArray m_errors;
};
