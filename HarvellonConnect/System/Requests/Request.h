#pragma once

#include "System/Failure.h"

#include <QByteArray>
#include <QString>

#include <optional>

// What the command line and the running program say to each other: a line of JSON each way. A line holds the
// version of the protocol; a program of another version answers with an error that every version understands.
// Any thread.

/// How a command ends, for the shell that waits for it. A search has the status of grep instead.
namespace ExitStatus {
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrongUsage = 2; ///< also for a project that is unknown
inline constexpr int notReady = 3;   ///< nobody is signed in, or the program does not run
} // namespace ExitStatus

/// What is opened of a project.
enum class OpenTarget { editor, files, site, admin, shell, database };

/// What the running program is asked for.
struct Request {
    enum class Command { show, toggle, list, status, connect, disconnect, open, search };

    static constexpr qsizetype longest = 16'384; ///< bytes of a line

    Command command = Command::show;
    QString project{}; ///< as the user has typed it; empty for all
    QString text{};    ///< what is sought, or the link to be shown
    OpenTarget target = OpenTarget::editor;
    bool json = false;

    [[nodiscard]] QByteArray toLine() const;
    /// Throws RequestError for anything but a whole request of this version.
    static Request parse(const QByteArray& line);

    bool operator==(const Request&) const = default;
};

/// What the user sees of the outcome.
struct Answer {
    int exitStatus = ExitStatus::done;
    QString output{}; ///< for the standard output
    QString error{};  ///< for the standard error, in one piece

    [[nodiscard]] QByteArray toLine() const;
    /// An answer of another version as an error of this one; nothing where it is no answer.
    static std::optional<Answer> parse(const QByteArray& line);

    bool operator==(const Answer&) const = default;
};

/// A request that is not fulfilled, with the exit status that tells.
class RequestError : public TextFailure {
  public:
    RequestError(int exitStatus, QString description)
        : TextFailure(std::move(description)), m_exitStatus(exitStatus) {}

    [[nodiscard]] int exitStatus() const { return m_exitStatus; }

  private:
    int m_exitStatus;
};

/// The word for a target on the command line, without "--".
[[nodiscard]] QString wordFor(OpenTarget target);
[[nodiscard]] std::optional<OpenTarget> openTarget(const QString& word);
