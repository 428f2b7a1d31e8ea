#include "Desktop/Panel/Rows/ButtonRail.h"

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

void ButtonRail::perform(int target, bool shift) {
    m_state->perform(target, m_domain, shift);
}
