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
    m_connected = state->connectedDomains();
    connect(state, &AppState::connectedDomainsChanged, this, &PanelSpeech::connectionsChanged);
    Q_EMIT stateChanged();
}

void PanelSpeech::connectionsChanged() {
    const QSet<QString> before = std::exchange(m_connected, m_state->connectedDomains());
    QStringList changes;
    for (const Project& project : m_state->projects()) {
        const bool connected = m_connected.contains(project.domain);
        if (connected != before.contains(project.domain))
            changes.append(project.title() +
                           (connected ? QStringLiteral(": Gemountet") : QStringLiteral(": Nicht verbunden")));
    }
    if (changes.isEmpty())
        return;
    // An alert is heard when it appears: the one before goes first.
    setNews(QString());
    setNews(changes.join(QStringLiteral(", ")));
    m_newsEnd.start(newsTime, this);
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
