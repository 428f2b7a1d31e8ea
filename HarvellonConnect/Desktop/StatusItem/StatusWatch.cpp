#include "Desktop/StatusItem/StatusWatch.h"

#include "State/AppState.h"

#include <QSystemTrayIcon>

using namespace std::chrono_literals;

StatusWatch::StatusWatch(AppState& state, QSystemTrayIcon& item)
    : m_state(state), m_item(item), m_sign(statusSign({})) {
    m_item.setIcon(statusIcon(m_sign.picture));
    m_item.setToolTip(m_sign.text);
    m_soon.setSingleShot(true);
    m_soon.setInterval(0ms);
    m_soon.callOnTimeout(this, &StatusWatch::update);
    const auto updateSoon = [this] { m_soon.start(); };
    const Connections& connections = state.parts().connections;
    connect(&connections, &Connections::connectionChanged, this, updateSoon);
    connect(&connections, &Connections::connectingChanged, this, updateSoon);
    connect(&state, &AppState::accountErrorChanged, this, updateSoon);
    connect(&state, &AppState::connectionStatusChanged, this, updateSoon);
    updateSoon();
}

StatusFacts StatusWatch::facts() const {
    const AppState::Parts parts = m_state.parts();
    const QSet<QString>& mounted = m_state.connectedDomains();
    StatusFacts facts{
        mounted.size(), parts.connections.connectingDomains(), {}, !m_state.accountError().isEmpty()};
    for (const Project& project : parts.connections.keptProjects()) {
        if (!mounted.contains(project.domain))
            facts.lost.append(project.domain);
    }
    // A session that the platform has ended; without an account nobody expects to be signed in.
    if (m_state.connectionStatus() == ConnectionStatus::Case::failure && !m_state.accounts().isEmpty() &&
        !parts.oauth.accessToken())
        facts.signInFailed = true;
    return facts;
}

void StatusWatch::update() {
    const StatusSign sign = statusSign(facts());
    if (sign == m_sign)
        return;
    if (sign.picture != m_sign.picture)
        m_item.setIcon(statusIcon(sign.picture));
    m_item.setToolTip(sign.text);
    m_sign = sign;
}
