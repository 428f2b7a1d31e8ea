import QtQuick
import Harvellon.Desktop

/// One action of a project's row.
BareIconButton {
    id: button

    required property shownAction action
    required property ButtonRail rail
    required property bool connecting
    required property bool lost

    readonly property color iconTint: Theme.dark ? action.tintDark : action.tintLight

    Accessible.description: enabled ? keys : "Verbindung wird aufgebaut"
    Accessible.name: help
    Accessible.role: Accessible.Button
    Accessible.onPressAction: rail.perform(action.target, false)
    activeFocusOnTab: rail.current
    enabled: !(action.restsWhileConnecting && connecting)
    help: lost && action.helpWhenLost !== "" ? action.helpWhenLost : action.help
    hoverTint: action.dangerous ? Theme.danger : iconTint
    isHovered: rail.hoveredButton === action.target
    keys: action.keys
    opacity: enabled ? 1 : ButtonLook.disabledOpacity
    outline: Theme.outline
    ringColor: Theme.focus
    still: Theme.still
    symbol: action.symbol
    tint: iconTint
    width: ActionTable.buttonColumnWidth
    x: lost ? action.slotWhenLost : action.slot
    y: (Theme.rowHeight - Theme.buttonSide) / 2

    onClicked: shift => rail.click(action.target, shift)
    onHoveredChanged: rail.pointer(action.target, hovered)
}
