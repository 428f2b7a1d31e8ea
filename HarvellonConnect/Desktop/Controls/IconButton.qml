import QtQuick
import Harvellon.Desktop

/// A button of the header: a symbol on a card of its own.
BareIconButton {
    id: button

    signal triggered

    Accessible.role: Accessible.Button
    Accessible.name: help
    Accessible.description: keys
    Accessible.onPressAction: button.clicked(false)
    activeFocusOnTab: true
    background: Theme.card
    isHovered: hovered
    outline: Theme.outline
    ringColor: Theme.focus
    still: Theme.still
    tint: Theme.ink

    onClicked: triggered()
}
