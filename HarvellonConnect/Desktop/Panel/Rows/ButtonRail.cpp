#include "Desktop/Panel/Rows/ButtonRail.h"

void ButtonRail::pointer(int target, bool inside) {
    const auto button = static_cast<HoverTarget>(target);
    // The pointer can be told to enter the next button before it is told to leave this one.
    if (!inside && m_hovered != button)
        return;
    const std::optional<HoverTarget> hovered = inside ? std::optional(button) : std::nullopt;
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    Q_EMIT hoveredButtonChanged();
}

void ButtonRail::perform(int target, bool shift) {
    m_state->perform(target, m_domain, shift);
}
