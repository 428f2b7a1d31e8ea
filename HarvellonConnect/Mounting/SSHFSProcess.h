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

/// One sshfs in the foreground, with the ssh that it starts. Both run in a session of their own: Ctrl+C in a
/// terminal does not reach them, and both can be killed together. Destroying this object leaves sshfs running
/// and does not wait for it. Main thread.
class SSHFSProcess : public QObject {
    Q_OBJECT

  public:
    SSHFSProcess();
    ~SSHFSProcess() override;

    /// Starts sshfs; call it once. If that fails, `end` finishes and `startFailure` has the reason.
    void start(const QString& executable, const QStringList& arguments);

    [[nodiscard]] bool isRunning() const { return m_process->state() != QProcess::NotRunning; }

    /// The process group of sshfs and its ssh, which is the process id of sshfs. 0 before the start.
    [[nodiscard]] qint64 group() const { return m_group; }

    /// Finished when sshfs has ended or could not be started.
    [[nodiscard]] QFuture<void> end() const { return m_end.future(); }

    /// Empty unless sshfs could not be started.
    [[nodiscard]] QString startFailure() const { return m_startFailure; }

    /// The last 8 KiB of standard error, trimmed; empty when they are not valid UTF-8.
    [[nodiscard]] QString errorText() const;

    /// Sends SIGTERM to sshfs, which unmounts and ends.
    void terminate();
    /// Sends SIGKILL to sshfs and its ssh. Only this frees a process that waits for a silent server.
    void kill();
    /// Terminates sshfs, and kills it if it is still running after `grace`. Returns when it has ended, or one
    /// second after the kill at the latest.
    static QCoro::Task<> stop(std::shared_ptr<SSHFSProcess> process, std::chrono::milliseconds grace);

  Q_SIGNALS:
    void ended(qint32 exitCode);

  private:
    void readErrors();

    QProcess* m_process; ///< no child object: it deletes itself when sshfs has ended
    QPromise<void> m_end;
    qint64 m_group = 0;
    QString m_startFailure;
    QByteArray m_errors;
};
