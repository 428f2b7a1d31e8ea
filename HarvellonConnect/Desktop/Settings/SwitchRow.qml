import QtQuick

/// A switch with its words.
Item {
    id: row

    property alias text: toggle.text
    property bool on: false
    property string caption
    property bool troubled: false

    signal toggled(bool wanted)

    BodyLabel {
        height: Theme.bodyLine
        text: toggle.text
        x: Theme.inset
        y: row.caption === "" ? (row.height - height) / 2 : row.height / 2 - 17
    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: row.troubled ? Accessible.AlertMessage : Accessible.StaticText
        color: row.troubled ? Theme.badInk : Theme.secondary
        elide: Text.ElideRight
        height: Theme.captionLine
        text: row.caption
        visible: text !== ""
        width: toggle.x - 12 - x
        x: Theme.inset
        y: row.height / 2 + 1
    }

    ToggleSwitch {
        id: toggle

        Accessible.description: row.caption
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        anchors.verticalCenter: parent.verticalCenter
        checked: row.on

        // The change can fail: restore the binding, so that the switch shows the real state.
        onToggled: {
            row.toggled(checked);
            checked = Qt.binding(() => row.on);
        }
    }
}
