import QtQuick
import Harvellon.Desktop

/// A cross without an outline, inside of what it closes or clears.
BareIconButton {
    id: button

    signal triggered

    Accessible.name: help
    Accessible.role: Accessible.Button
    Accessible.onPressAction: button.clicked(false)
    activeFocusOnTab: true
    height: Theme.smallButtonSide
    isHovered: hovered
    outline: "transparent"
    ringColor: Theme.focus
    still: Theme.still
    symbol: "xmark"
    width: Theme.smallButtonSide

    onClicked: triggered()
}
