#pragma once

#include <QString>

#include <chrono>
#include <functional>

/// What the command shows while it runs: results on the standard output, everything else on the standard
/// error, and there, on a terminal only, a line that tells what it waits for. As long as one exists, the
/// interrupt key ends the waiting instead of the process.
class Terminal {
  public:
    static constexpr int interruptedStatus = 130; ///< as shells have it

    Terminal();
    ~Terminal();
    Q_DISABLE_COPY_MOVE(Terminal)

    /// From now on this is waited for; an empty text takes the line away.
    void setProgress(const QString& text);

    /// A question for those who wait: shows how long it has taken, and says no after an interrupt.
    [[nodiscard]] std::function<bool(std::chrono::milliseconds)> goOn();

    [[nodiscard]] static bool isInterrupted();

    static void print(const QString& text);
    /// Lines on the standard error, after the name of the command. Control characters are replaced.
    static void tell(const QString& text);

  private:
    void show(const QString& line);

    const bool m_isTerminal;
    QString m_progress;
    bool m_isShown = false;
};
