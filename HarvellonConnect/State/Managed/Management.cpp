#include "State/Managed/Management.h"

#include "System/Managed/ManagedSettings.h"
#include "System/Preferences.h"

bool Management::fixesHotkey() const {
    return m_preferences.fixed(SettingKey::hotkey).isValid();
}

std::optional<bool> Management::startsAtLogin() const {
    const QVariant starts = m_preferences.fixed(SettingKey::startsAtLogin);
    return starts.isValid() ? std::optional(starts.toBool()) : std::nullopt;
}

QString Management::summary() const {
    QStringList laidDown;
    const QString server = m_preferences.fixed(SettingKey::server).toString();
    if (!server.isEmpty())
        laidDown.append(QStringLiteral("Server %1").arg(server));
    const QVariant updates = m_preferences.fixed(SettingKey::updates);
    if (updates.isValid() && !updates.toBool())
        laidDown.append(QStringLiteral("keine Suche nach Updates"));
    return laidDown.isEmpty()
               ? QString()
               : QStringLiteral("Von der Verwaltung festgelegt: %1").arg(laidDown.join(QStringLiteral(", ")));
}
