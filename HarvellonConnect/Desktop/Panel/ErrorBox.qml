import QtQuick
import Harvellon.Desktop

/// What an ErrorLine shows. Grows with its text, up to six lines; a longer text can be copied.
Box {
    id: box

    required property ErrorLine line

    readonly property string text: line?.text ?? ""
    readonly property string help: line?.help ?? ""
    readonly property bool isLong: text.length > 300 || text.split("\n").length > 6
    readonly property bool hasLinks: isLong || help !== ""

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage
    borderColor: Theme.badEdge
    color: Theme.badBg
    height: Math.max(32, words.height + 14 + (hasLinks ? links.height : 0))
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
        anchors.verticalCenterOffset: box.hasLinks ? -links.height / 2 : 0
        color: Theme.badInk
        elide: Text.ElideRight
        maximumLineCount: 6
        text: box.text
        wrapMode: Text.Wrap
    }

    Row {
        id: links

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 3
        anchors.left: words.left
        anchors.leftMargin: -8
        height: Theme.smallButtonSide

        LinkButton {
            Accessible.name: "Meldung kopieren"
            ink: Theme.badInk
            text: "Kopieren"
            visible: box.isLong

            onClicked: box.line.copied()
        }

        LinkButton {
            ink: Theme.badInk
            text: box.help
            visible: box.help !== ""

            onClicked: box.line.helped()
        }
    }

    SmallButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: 4
        help: "Meldung schließen"
        tint: Theme.badInk
        y: 4

        onTriggered: box.line.dismissed()
    }
}
