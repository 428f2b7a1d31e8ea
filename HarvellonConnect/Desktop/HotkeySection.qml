import QtQuick
import Harvellon.State

/// The switch of the global key.
Card {
    id: card

    required property AppState state

    readonly property bool troubled: state.globalHotkeyEnabled && state.hotkeyProblem !== ""

    Accessible.name: "Tastatur"
    Accessible.role: Accessible.Grouping

    Text {
        color: Theme.ink
        font.pixelSize: Theme.bodySize
        font.weight: Font.Medium
        height: 17
        text: toggle.text
        verticalAlignment: Text.AlignVCenter
        x: Theme.inset
        y: 11
    }

    Text {
        Accessible.name: text
        Accessible.role: card.troubled ? Accessible.AlertMessage : Accessible.StaticText
        color: card.troubled ? Theme.badInk : Theme.secondary
        elide: Text.ElideRight
        font.pixelSize: Theme.captionSize
        height: 14
        text: card.troubled ? card.state.hotkeyProblem : "Systemweit aktiv, auch wenn die App im Hintergrund ist."
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
        width: toggle.x - 12 - x
        x: Theme.inset
        y: 29
    }

    ToggleSwitch {
        id: toggle

        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        checked: card.state.globalHotkeyEnabled
        text: "F19 oeffnet Harvellon Connect"

        onToggled: card.state.globalHotkeyEnabled = checked
    }
}
