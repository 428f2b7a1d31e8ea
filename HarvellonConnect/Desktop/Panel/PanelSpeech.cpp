#include "Desktop/Panel/PanelSpeech.h"

#include <QAccessible>
#include <QQuickWindow>

namespace {
constexpr int announcementDuration = 5000; // milliseconds
} // namespace

void PanelSpeech::setState(AppState* state) {
    if (state == m_state)
        return;
    m_state = state;
    connect(&state->parts().connections, &Connections::connectionChanged, this,
            &PanelSpeech::connectionChanged);
    Q_EMIT stateChanged();
}

void PanelSpeech::connectionChanged(const QString& domain, bool connected) {
    for (const Project& project : m_state->projects()) {
        if (project.domain != domain)
            continue;
        // Screen readers announce an alert when it appears, so hide the previous one first.
        setAnnouncement(QString());
        setAnnouncement(project.title() +
                        (connected ? QStringLiteral(": Gemountet") : QStringLiteral(": Nicht verbunden")));
        m_clearTimer.start(announcementDuration, this);
    }
}

void PanelSpeech::setAnnouncement(const QString& announcement) {
    m_announcement = announcement;
    Q_EMIT announcementChanged();
}

void PanelSpeech::timerEvent(QTimerEvent* /*event*/) {
    m_clearTimer.stop();
    setAnnouncement(QString());
}

void PanelSpeech::announceFocus(QQuickItem* item) {
    if (!item || !item->window() || !item->window()->isActive())
        return;
    QAccessibleEvent event(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}
