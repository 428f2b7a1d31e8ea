import QtQuick
import Harvellon.Desktop

/// The last failure, until it is put aside. Grows with its text, up to six lines.
Rectangle {
    id: line

    required property string text

    signal dismissed

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage
    border.color: Theme.badEdge
    color: Theme.badBg
    height: Math.max(32, words.height + 14)
    radius: Theme.rowRadius

    SymbolIcon {
        color: Theme.badInk
        size: Theme.smallIconSize
        symbol: "exclamationmark.triangle.fill"
        x: 10
        y: 8
    }

    NoteLabel {
        id: words

        anchors.left: parent.left
        anchors.leftMargin: 34
        anchors.right: close.left
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.badInk
        elide: Text.ElideRight
        maximumLineCount: 6
        text: line.text
        wrapMode: Text.Wrap
    }

    SmallButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: 4
        help: "Meldung schließen"
        tint: Theme.badInk
        y: 4

        onTriggered: line.dismissed()
    }
}
