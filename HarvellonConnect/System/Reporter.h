#pragma once

#include "System/Failure.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <optional>

enum class ActivityLogLevel { info, success, warning, error };

/// The line of the activity log with which an operation ends. An empty one is not logged.
struct Ending {
    QString line;
    ActivityLogLevel level = ActivityLogLevel::success;
};

/// Ends an operation with an error line of its own in place of the operation's failure text. The description
/// is what `lastError` shows.
class EndedEarly : public Failure {
  public:
    explicit EndedEarly(QString line, QString description = {})
        : m_line(std::move(line)), m_description(std::move(description)) {}

    [[nodiscard]] QString line() const { return m_line; }

    [[nodiscard]] QString description() const override { return m_description; }

  private:
    QString m_line;
    QString m_description;
};

/// What an operation tells the user.
struct OperationTexts {
    QString begin;                 ///< logged at info before the work; empty for none
    QString failure;               ///< stands before the description of a failure
    bool publishesFailure = false; ///< `lastError` is cleared at the start and takes the description
};

/// Tells the user what operations do and how they end. Main thread.
class Reporter {
  public:
    Reporter() = default;
    virtual ~Reporter() = default;
    Q_DISABLE_COPY_MOVE(Reporter)

    /// Appends one line to the activity log.
    virtual void log(const QString& message, ActivityLogLevel level) = 0;
    virtual void setLastError(std::optional<QString> error) = 0;

    /// Tells what is no failure, but must not be overlooked: in the log and as `lastError`.
    void warn(const QString& message);

    /// Runs `work` and tells how it ended, whatever it throws. Yields whether it succeeded. This must outlive
    /// the work.
    QCoro::Task<bool> run(OperationTexts texts, std::function<QCoro::Task<Ending>()> work);
};
