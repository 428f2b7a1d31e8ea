#include "System/Shell.h"

#include "System/Text.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QFuture>
#include <QPointer>
#include <QProcess>
#include <QPromise>
#include <QTimer>

namespace {
constexpr qsizetype largestOutput = 16 * 1024 * 1024; // far more than any command of ours has reason to print

/// One command under way. Deletes itself when the child has ended; a child that outlives its time is left to
/// end on its own, because destroying a running QProcess would wait for it.
class Run : public QObject {
  public:
    using Outcome = std::optional<ShellResult>; ///< nothing: it could not be started

    QFuture<Outcome> start(const QString& executable, const QStringList& arguments,
                           std::chrono::milliseconds limit) {
        connect(&m_process, &QProcess::readyReadStandardOutput, this, [this] { drain(); });
        connect(&m_process, &QProcess::readyReadStandardError, this, [this] { drain(); });
        connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                finish(std::nullopt);
                deleteLater();
            }
        });
        connect(&m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
            drain();
            // A child ended by a signal has no exit code of its own; any non-zero one says "not well".
            finish(ShellResult{status == QProcess::NormalExit ? code : code + 128,
                               strictUtf8(m_out).value_or(QString()), strictUtf8(m_err).value_or(QString())});
            deleteLater();
        });
        if (limit != Shell::noLimit) {
            QTimer::singleShot(limit, this, [this] {
                finish(ShellResult{Shell::timedOut, {}, QStringLiteral("Zeitüberschreitung")});
                m_process.kill();
            });
            // Nobody is there to end it afterwards.
            connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_process,
                    &QProcess::kill);
        }
        m_promise.start();
        QFuture<Outcome> future = m_promise.future();
        m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
        m_process.start(executable, arguments);
        return future;
    }

  private:
    /// Takes what has arrived, so that a talkative child never fills its pipe.
    void drain() {
        const auto take = [](QByteArray& into, const QByteArray& arrived) {
            into.append(arrived.constData(), std::min(arrived.size(), largestOutput - into.size()));
        };
        take(m_out, m_process.readAllStandardOutput());
        take(m_err, m_process.readAllStandardError());
    }

    void finish(Outcome outcome) {
        if (m_promise.future().isFinished())
            return;
        m_promise.addResult(std::move(outcome));
        m_promise.finish();
    }

    QProcess m_process;
    QPromise<Outcome> m_promise;
    QByteArray m_out;
    QByteArray m_err;
};
} // namespace

ShellError ShellError::launchFailed(const QString& executable) {
    return ShellError(
        QStringLiteral("Start von %1 fehlgeschlagen. Ist es installiert und erreichbar?").arg(executable));
}

QCoro::Task<ShellResult> Shell::run(QString executable, QStringList arguments,
                                    std::chrono::milliseconds limit) {
    auto* run = new Run;
    QFuture<Run::Outcome> ended = run->start(executable, arguments, limit);
    const Run::Outcome outcome = co_await ended;
    if (!outcome)
        throw ShellError::launchFailed(executable);
    co_return *outcome;
}

void Shell::launch(const QString& executable, const QStringList& arguments) {
    QProcess process;
    process.setProgram(executable);
    process.setArguments(arguments);
    // A pipe of ours would break with us, and a terminal or a browser with it.
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        throw ShellError::launchFailed(executable);
}

QCoro::Task<std::optional<QString>> Shell::which(QString name) {
    const QStringList arguments{name};
    const ShellResult result = co_await run(QStringLiteral("/usr/bin/which"), arguments, noLimit);
    if (result.exitCode != 0)
        co_return std::nullopt;
    co_return result.stdout.trimmed();
}
