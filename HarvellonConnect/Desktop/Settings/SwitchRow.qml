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
        height: 17
        text: toggle.text
        x: Theme.inset
        y: row.caption === "" ? (row.height - height) / 2 : row.height / 2 - 17
    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: row.troubled ? Accessible.AlertMessage : Accessible.StaticText
        color: row.troubled ? Theme.badInk : Theme.secondary
        elide: Text.ElideRight
        height: 14
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
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        checked: row.on

        // What was asked for may not come about: then the switch goes back.
        onToggled: {
            row.toggled(checked);
            checked = Qt.binding(() => row.on);
        }
    }
}
