import QtQuick
import Harvellon.Desktop

/// Something that the system does not let the program do, and the way to where the user can allow it.
Box {
    id: line

    required property string text
    property bool closable: false

    signal allowed
    signal dismissed

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
        text: line.text
        width: parent.width - x - (line.closable ? close.width + 12 : 14)
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

        onClicked: line.allowed()
    }

    SmallButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: 4
        help: "Hinweis schließen"
        tint: Theme.busyInk
        visible: line.closable
        y: 4

        onTriggered: line.dismissed()
    }
}
