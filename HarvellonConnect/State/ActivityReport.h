#pragma once

#include "State/ActivityLog.h"
#include "System/Reporter.h"

#include <QObject>
#include <QVariant>

#include <optional>

class Preferences;

/// Where operations tell the user what they do: the activity log, the last error and the accounts' error. Of
/// a text of more than 8192 characters the beginning is kept. Main thread.
class ActivityReport : public QObject, public Reporter {
    Q_OBJECT

  public:
    /// `preferences` outlive this.
    explicit ActivityReport(Preferences& preferences) : m_preferences(preferences) {}

    /// What is kept of a text. What a command of a server has printed may be megabytes long, and the views
    /// would lay all of it out.
    static QString bounded(const QString& text);

    void log(const QString& message, ActivityLogLevel level) override;
    void setLastError(std::optional<QString> error) override;
    void setAccountError(std::optional<QString> error) override;
    /// Clears the accounts' error where it is this one, which is true no more.
    void withdrawAccountError(const QString& error);

    /// Keeps preferences, in one piece; logs an error where they cannot be stored. An invalid value removes
    /// its key.
    void remember(const QVariantMap& values);

    void remember(const QString& key, const QVariant& value) { remember({{key, value}}); }

    [[nodiscard]] ActivityLog* activityLog() { return &m_activityLog; }

    [[nodiscard]] const std::optional<QString>& lastError() const { return m_lastError; }

    [[nodiscard]] const std::optional<QString>& accountError() const { return m_accountError; }

  Q_SIGNALS:
    void lastErrorChanged();
    void accountErrorChanged();

  private:
    Preferences& m_preferences;
    ActivityLog m_activityLog;
    std::optional<QString> m_lastError;
    std::optional<QString> m_accountError;
};
