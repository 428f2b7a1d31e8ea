#pragma once

#include "State/ActivityLog.h"
#include "System/Reporter.h"

#include <QObject>
#include <QVariant>

#include <optional>

class Preferences;

/// Where operations tell the user what they do: the activity log and the last error. Main thread.
class ActivityReport : public QObject, public Reporter {
    Q_OBJECT

  public:
    /// `preferences` outlive this.
    explicit ActivityReport(Preferences& preferences) : m_preferences(preferences) {}

    void log(const QString& message, ActivityLogLevel level) override;
    void setLastError(std::optional<QString> error) override;

    /// Keeps a preference; logs an error where it cannot be stored.
    void remember(const QString& key, const QVariant& value);

    [[nodiscard]] ActivityLog* activityLog() { return &m_activityLog; }

    [[nodiscard]] const std::optional<QString>& lastError() const { return m_lastError; }

  Q_SIGNALS:
    void lastErrorChanged();

  private:
    Preferences& m_preferences;
    ActivityLog m_activityLog;
    std::optional<QString> m_lastError;
};
