#include "State/ActivityReport.h"

#include "System/Preferences.h"

void ActivityReport::log(const QString& message, ActivityLogLevel level) {
    m_activityLog.append(message, level);
}

void ActivityReport::setLastError(std::optional<QString> error) {
    if (m_lastError == error)
        return;
    m_lastError = std::move(error);
    Q_EMIT lastErrorChanged();
}

void ActivityReport::remember(const QVariantMap& values) {
    if (!m_preferences.set(values))
        log(QStringLiteral("Die Einstellungen konnten nicht gespeichert werden: %1")
                .arg(m_preferences.file()),
            ActivityLogLevel::error);
}
