#include "State/ActivityReport.h"

#include "System/Preferences.h"

QString ActivityReport::bounded(const QString& text) {
    constexpr qsizetype most = 8 * 1024;
    return text.size() <= most ? text : text.left(most) + QChar(u'…');
}

void ActivityReport::log(const QString& message, ActivityLogLevel level) {
    m_activityLog.append(bounded(message), level);
}

void ActivityReport::setLastError(std::optional<QString> error) {
    if (error)
        error = bounded(*error);
    if (m_lastError == error)
        return;
    m_lastError = std::move(error);
    Q_EMIT lastErrorChanged();
}

void ActivityReport::setAccountError(std::optional<QString> error) {
    if (error)
        error = bounded(*error);
    if (m_accountError == error)
        return;
    m_accountError = std::move(error);
    Q_EMIT accountErrorChanged();
}

void ActivityReport::withdrawAccountError(const QString& error) {
    if (m_accountError == error)
        setAccountError(std::nullopt);
}

void ActivityReport::remember(const QVariantMap& values) {
    if (!m_preferences.set(values))
        log(QStringLiteral("Die Einstellungen konnten nicht gespeichert werden: %1")
                .arg(m_preferences.file()),
            ActivityLogLevel::error);
}
