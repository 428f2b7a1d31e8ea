#pragma once

#include "System/Failure.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <optional>

enum class ActivityLogLevel { info, success, warning, error };

/// How an operation ended well: its line in the activity log. An empty line is not logged.
struct Ending {
    QString line;
    ActivityLogLevel level = ActivityLogLevel::success;
};

/// A failure with a log line of its own, used instead of the operation's failure text. The description goes
/// into `lastError`.
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

/// The texts of an operation.
struct OperationTexts {
    QString begin;                 ///< logged at info before the work; empty for none
    QString failure;               ///< stands before the description of a failure
    bool publishesFailure = false; ///< `lastError` is cleared at the start and takes the description
    bool concernsAccount = false;  ///< the accounts' error takes the description
};

/// Reports operations to the user: in the activity log, and failures as `lastError`. Main thread.
class Reporter {
  public:
    Reporter() = default;
    virtual ~Reporter() = default;
    Q_DISABLE_COPY_MOVE(Reporter)

    /// Appends one line to the activity log.
    virtual void log(const QString& message, ActivityLogLevel level) = 0;
    virtual void setLastError(std::optional<QString> error) = 0;
    /// What went wrong with a sign-in or an account; shown with the accounts, until the next attempt.
    virtual void setAccountError(std::optional<QString> error) = 0;

    /// Reports a warning that must be seen: in the activity log and as `lastError`.
    void warn(const QString& message);
    /// Reports an error in the activity log and as the accounts' error.
    void accountFailed(const QString& message);

    /// Runs `work` and reports its end, whatever it throws. Yields whether it succeeded. Must outlive the
    /// work.
    QCoro::Task<bool> run(OperationTexts texts, std::function<QCoro::Task<Ending>()> work);
};
