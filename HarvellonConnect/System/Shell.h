#pragma once

#include "System/Failure.h"

#include <QByteArray>
#include <QCoroTask>
#include <QFuture>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdio> // stdout and stderr are macros on macOS: every user of ShellResult must see them alike
#include <optional>

/// What an external command left behind.
struct ShellResult {
    qint32 exitCode = 0;
    QString stdout;     ///< everything written to standard output; empty when it is not valid UTF-8
    QString stderr;     ///< everything written to standard error; empty when it is not valid UTF-8
    QByteArray bytes{}; ///< standard output as it came
};

/// The command could not be started. Its description is the sentence shown to the user.
class ShellError : public TextFailure {
  public:
    static ShellError launchFailed(const QString& executable);

  private:
    using TextFailure::TextFailure;
};

/// Runs external commands to completion. Stateless; any number may run at once. Main thread.
class Shell {
  public:
    /// The exit code of a command that was killed because its time was over.
    static constexpr qint32 timedOut = -1;
    static constexpr std::chrono::milliseconds noLimit{0};

    Shell() = default;
    virtual ~Shell() = default;
    Q_DISABLE_COPY_MOVE(Shell)

    /// Starts `executable` (an absolute path) with `arguments`, never through a shell, and waits for its end
    /// without blocking. A non-zero exit is a result, not a failure. When `limit` is given and passes, the
    /// child is killed and the result is `timedOut` at once, even where the child itself cannot die yet; the
    /// end of the program kills it, too.
    /// Throws ShellError when the command cannot be started.
    [[nodiscard]] virtual QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                                       std::chrono::milliseconds limit = noLimit);

    /// Starts a program in a session of its own and does not wait for it. Its output is dropped, and it
    /// survives the end of this program. Throws ShellError when it cannot be started.
    virtual void launch(const QString& executable, const QStringList& arguments);

    /// As `launch`, and finishes when the program ends: with whether it could be started and has exited with
    /// 0.
    [[nodiscard]] virtual QFuture<bool> launchWatched(const QString& executable,
                                                      const QStringList& arguments);

    /// Where `name` is found on the search path that this program inherited; nothing also where the host has
    /// no command that looks.
    [[nodiscard]] QCoro::Task<std::optional<QString>> which(QString name);
};
