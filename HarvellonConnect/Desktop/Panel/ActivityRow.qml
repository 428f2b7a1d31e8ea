import QtQuick
import Harvellon.Desktop

/// One line of the activity log. Of a message with several lines, or a very long one, it shows the beginning, and
/// offers to copy the rest. A line that is selected alone is shown whole.
Item {
    id: row

    required property string time
    required property string symbol
    required property int level
    required property string message
    required property int index

    property bool current: false
    property bool selected: false
    property bool selectedAlone: false

    readonly property int lineHeight: 22
    readonly property int mostShown: 300 ///< more would not fit, and would be laid out all the same
    readonly property bool isLong: message.length > mostShown || /[\r\n]/.test(message.trim())

    signal copied

    Accessible.description: time
    Accessible.name: message
    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.selected: selected
    height: selectedAlone ? Math.max(lineHeight, words.implicitHeight + 7) : lineHeight

    // A pooled row would still be visible to screen readers.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    Box {
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        borderColor: row.current ? Theme.focus : "transparent"
        color: Theme.selection
        radius: Theme.tipRadius
        visible: row.selected
    }

    CaptionLabel {
        height: row.lineHeight
        text: row.time
        x: Theme.inset
    }

    SymbolIcon {
        color: Theme.levels[row.level]
        size: 14
        symbol: row.symbol
        x: 70
        y: 4
    }

    NoteLabel {
        id: words

        anchors.left: parent.left
        anchors.leftMargin: 92
        anchors.right: copy.visible ? copy.left : parent.right
        anchors.rightMargin: copy.visible ? 4 : Theme.inset
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.ink
        elide: row.selectedAlone ? Text.ElideNone : row.isLong ? Text.ElideRight : Text.ElideMiddle
        text: row.selectedAlone ? row.message.trim() : row.message.slice(0, row.mostShown).replace(/\s*[\r\n]+\s*/g, " ")
        wrapMode: row.selectedAlone ? Text.Wrap : Text.NoWrap
    }

    LinkButton {
        id: copy

        Accessible.description: row.message.slice(0, row.mostShown)
        Accessible.name: "Meldung kopieren"
        anchors.right: parent.right
        anchors.rightMargin: 4
        height: row.lineHeight
        text: "Kopieren"
        visible: row.isLong

        onClicked: row.copied()
    }
}
