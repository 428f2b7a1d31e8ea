import QtQuick
import Harvellon.Desktop

/// One line of the activity log. Of a message with several lines, or a very long one, it shows the beginning, and
/// offers to copy the rest.
Item {
    id: row

    required property string time
    required property string symbol
    required property int level
    required property string message

    readonly property int mostShown: 300 ///< more would not fit, and would be laid out all the same
    readonly property bool isLong: message.length > mostShown || /[\r\n]/.test(message.trim())

    signal copied

    Accessible.description: time
    Accessible.name: message
    Accessible.role: Accessible.ListItem
    height: 22

    // A pooled row would still be visible to screen readers.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    CaptionLabel {
        anchors.verticalCenter: parent.verticalCenter
        text: row.time
        x: Theme.inset
    }

    SymbolIcon {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.levels[row.level]
        size: 14
        symbol: row.symbol
        x: 70
    }

    NoteLabel {
        anchors.left: parent.left
        anchors.leftMargin: 92
        anchors.right: copy.visible ? copy.left : parent.right
        anchors.rightMargin: copy.visible ? 4 : Theme.inset
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.ink
        elide: row.isLong ? Text.ElideRight : Text.ElideMiddle
        text: row.message.slice(0, row.mostShown).replace(/\s*[\r\n]+\s*/g, " ")
    }

    LinkButton {
        id: copy

        Accessible.description: row.message.slice(0, row.mostShown)
        Accessible.name: "Meldung kopieren"
        anchors.right: parent.right
        anchors.rightMargin: 4
        height: row.height
        text: "Kopieren"
        visible: row.isLong

        onClicked: row.copied()
    }
}
