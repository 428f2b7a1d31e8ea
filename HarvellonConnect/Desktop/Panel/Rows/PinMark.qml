import QtQuick
import Harvellon.Desktop

/// The pin of a project's row: pins it, or shows its place among the pinned ones and pins it no more.
Row {
    id: mark

    readonly property PinLoader loader: parent as PinLoader
    readonly property shownAction action: loader ? loader.action : ActionTable.pin

    spacing: 2

    CaptionLabel {
        anchors.verticalCenter: parent.verticalCenter
        text: mark.loader?.place ?? ""
        visible: (mark.loader?.keys ?? "") !== ""
    }

    BareIconButton {
        id: button

        Accessible.description: keys
        Accessible.name: help
        Accessible.role: Accessible.Button
        Accessible.onPressAction: button.clicked(false)
        activeFocusOnTab: mark.loader?.buttons?.current ?? false
        height: Theme.smallButtonSide
        help: mark.action.help
        isHovered: hovered
        keys: mark.action.keys
        outline: "transparent"
        ringColor: Theme.focus
        still: Theme.still
        symbol: mark.action.symbol
        tint: Theme.secondary
        width: Theme.smallButtonSide

        onClicked: mark.loader.buttons.perform(mark.action.target, false)
    }
}
