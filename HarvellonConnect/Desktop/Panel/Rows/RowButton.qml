import QtQuick
import Harvellon.Desktop

/// One action of a project's row.
BareIconButton {
    id: button

    required property rowButtonFacts facts
    required property ButtonRail rail

    Accessible.description: enabled ? keys : "Verbindung wird aufgebaut"
    Accessible.name: help
    Accessible.role: Accessible.Button
    Accessible.onPressAction: button.clicked(false)
    activeFocusOnTab: rail.current
    help: facts.help
    isHovered: rail.hoveredButton === facts.target
    keys: facts.keys
    outline: Theme.outline
    ringColor: Theme.focus
    symbol: facts.symbol
    y: 5

    onClicked: shift => rail.perform(facts.target, shift)
    onHoveredChanged: rail.pointer(facts.target, hovered)
}
