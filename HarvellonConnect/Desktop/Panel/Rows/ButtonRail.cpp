#include "Desktop/Panel/Rows/ButtonRail.h"

#include <QGuiApplication>
#include <QStyleHints>

#include <chrono>

namespace {
constexpr std::chrono::milliseconds reactionTime{600}; // an eye needs it to see that a button has changed
}

void ButtonRail::pointer(int target, bool inside) {
    const auto button = static_cast<HoverTarget>(target);
    // Qt may deliver the next button's enter event before this button's leave event.
    if (!inside && m_hovered != button)
        return;
    const std::optional<HoverTarget> hovered = inside ? std::optional(button) : std::nullopt;
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    Q_EMIT hoveredButtonChanged();
}

void ButtonRail::setState(AppState* state) {
    if (state == m_state)
        return;
    m_state = state;
    connect(&state->parts().connections, &Connections::connectionChanged, this,
            [this](const QString& domain, bool connected) {
                if (connected && domain == m_domain)
                    m_sinceMounted.start();
            });
    Q_EMIT stateChanged();
}

void ButtonRail::setDomain(const QString& domain) {
    if (domain == m_domain)
        return;
    m_domain = domain;
    m_sinceMounted.invalidate();
    m_sinceDisconnect.invalidate();
    Q_EMIT domainChanged();
}

void ButtonRail::click(int target, bool shift) {
    const auto clicked = static_cast<HoverTarget>(target);
    if (clicked == HoverTarget::connect && m_sinceDisconnect.isValid() &&
        m_sinceDisconnect.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval())
        return;
    if (clicked == HoverTarget::disconnect && m_sinceMounted.isValid() &&
        m_sinceMounted.elapsed() < reactionTime.count())
        return;
    if (clicked == HoverTarget::disconnect)
        m_sinceDisconnect.start();
    perform(target, shift);
}

void ButtonRail::perform(int target, bool shift) {
    m_state->perform(target, m_domain, shift);
}
