#include "Desktop/Panel/PanelSpeech.h"

#include <QAccessible>
#include <QQuickWindow>

namespace {
constexpr int newsTime = 5000; // milliseconds
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
        // Screen readers announce an alert when it appears, so the one before must vanish first.
        setNews(QString());
        setNews(project.title() +
                (connected ? QStringLiteral(": Gemountet") : QStringLiteral(": Nicht verbunden")));
        m_newsEnd.start(newsTime, this);
    }
}

void PanelSpeech::setNews(const QString& news) {
    m_news = news;
    Q_EMIT newsChanged();
}

void PanelSpeech::timerEvent(QTimerEvent* /*event*/) {
    m_newsEnd.stop();
    setNews(QString());
}

void PanelSpeech::tellFocus(QQuickItem* item) {
    if (!item || !item->window() || !item->window()->isActive())
        return;
    QAccessibleEvent event(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}
