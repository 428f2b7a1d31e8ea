import QtQuick
import Harvellon.Desktop

/// One line of the activity log.
Item {
    id: row

    required property string time
    required property string symbol
    required property int level
    required property string message

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
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.ink
        elide: Text.ElideMiddle
        text: row.message.replace(/\s*[\r\n]+\s*/g, " ")
    }
}
