import QtQuick
import Harvellon.Desktop

/// What a RefusalLine shows.
Box {
    id: box

    required property RefusalLine line

    readonly property string text: line?.text ?? ""
    readonly property bool closable: line?.closable ?? false

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage
    borderColor: Theme.cardEdge
    color: Theme.busyBg
    height: words.height + 14 + allow.height
    radius: Theme.rowRadius

    SymbolIcon {
        color: Theme.busyInk
        size: Theme.smallIconSize
        symbol: "info.circle"
        x: 10
        y: 8
    }

    NoteLabel {
        id: words

        color: Theme.busyInk
        elide: Text.ElideRight
        maximumLineCount: 4
        text: box.text
        width: parent.width - x - (box.closable ? close.width + 12 : 14)
        wrapMode: Text.Wrap
        x: 34
        y: 8
    }

    LinkButton {
        id: allow

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 3
        ink: Theme.busyInk
        text: "Systemeinstellungen öffnen"
        x: 26

        onClicked: box.line.allowed()
    }

    SmallButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: 4
        help: "Hinweis schließen"
        tint: Theme.busyInk
        visible: box.closable
        y: 4

        onTriggered: box.line.dismissed()
    }
}
