#include "System/Shell.h"

#include "System/Text.h"

#include <QCoreApplication>
#include <QCoroSignal>
#include <QProcess>
#include <QPromise>

#include <memory>
#include <unistd.h>

namespace {
constexpr qsizetype largestOutput = 16 * 1024 * 1024; // far more than any command of ours has reason to print
constexpr std::chrono::milliseconds forever{-1};

/// A running command. Deletes itself when the child has ended. A child that ignores its time limit is left to
/// end later, because destroying a running QProcess would block until then.
class ChildProcess : public QObject {
    Q_OBJECT

  public:
    struct Outcome {
        bool started = false;
        ShellResult result;
    };

    ChildProcess() {
        connect(&m_process, &QProcess::readyReadStandardOutput, this, &ChildProcess::drain);
        connect(&m_process, &QProcess::readyReadStandardError, this, &ChildProcess::drain);
        connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                end({});
        });
        connect(&m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
            drain();
            // A child that was ended by a signal has no exit code; report a non-zero one as shells do.
            end({true,
                 {status == QProcess::NormalExit ? code : code + 128, strictUtf8(m_out).value_or(QString()),
                  strictUtf8(m_err).value_or(QString()), m_out}});
        });
    }

    void start(const QString& executable, const QStringList& arguments, bool limited) {
        if (limited) // after the event loop the time limit no longer works
            connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_process,
                    &QProcess::kill);
        m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
        m_process.start(executable, arguments);
    }

    void kill() { m_process.kill(); }

  Q_SIGNALS:
    void ended(ChildProcess::Outcome outcome);

  private:
    /// Reads what has arrived, so that the child never blocks on a full pipe.
    void drain() {
        const auto take = [](QByteArray& into, const QByteArray& arrived) {
            into.append(arrived.constData(), std::min(arrived.size(), largestOutput - into.size()));
        };
        take(m_out, m_process.readAllStandardOutput());
        take(m_err, m_process.readAllStandardError());
    }

    void end(const Outcome& outcome) {
        Q_EMIT ended(outcome); // reaches the waiting coroutine as a queued event
        // Behind that event: a deletion that is due may be carried out before an event that came first.
        QMetaObject::invokeMethod(this, &QObject::deleteLater, Qt::QueuedConnection);
    }

    QProcess m_process;
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
    auto* const child = new ChildProcess;
    // The wait begins before the start, which may fail at once.
    auto ended = qCoro(child, &ChildProcess::ended, limit == noLimit ? forever : limit);
    child->start(executable, arguments, limit != noLimit);
    const std::optional<ChildProcess::Outcome> outcome = co_await ended;
    if (!outcome) {
        child->kill();
        co_return ShellResult{timedOut, {}, QStringLiteral("Zeitüberschreitung")};
    }
    if (!outcome->started)
        throw ShellError::launchFailed(executable);
    co_return outcome->result;
}

void Shell::launch(const QString& executable, const QStringList& arguments) {
    QProcess process;
    process.setProgram(executable);
    process.setArguments(arguments);
    // Inherited pipes would break when this program ends, and the terminal or browser might end with them.
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        throw ShellError::launchFailed(executable);
}

QFuture<bool> Shell::launchWatched(const QString& executable, const QStringList& arguments) {
    auto* const process = new QProcess; // without an owner, whose end would kill the program
    process->setProgram(executable);
    process->setArguments(arguments);
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([] { ::setsid(); });
    const auto outcome = std::make_shared<QPromise<bool>>();
    outcome->start();
    const auto end = [process, outcome](bool succeeded) {
        outcome->addResult(succeeded);
        outcome->finish();
        process->deleteLater();
    };
    QObject::connect(process, &QProcess::errorOccurred, process, [end](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(false);
    });
    QObject::connect(process, &QProcess::finished, process, [end](int code, QProcess::ExitStatus status) {
        end(status == QProcess::NormalExit && code == 0);
    });
    process->start();
    return outcome->future();
}

QCoro::Task<std::optional<QString>> Shell::which(QString name) {
    const QStringList arguments{name};
    try {
        const ShellResult result = co_await run(QStringLiteral("/usr/bin/which"), arguments, noLimit);
        if (result.exitCode == 0)
            co_return result.stdout.trimmed();
    } catch (const ShellError&) {
        // Not every desktop has the command; the caller goes on where it would not find anything.
    }
    co_return std::nullopt;
}

#include "Shell.moc"
