import QtQuick
import Harvellon.Desktop

/// The last failure, until it is put aside.
Rectangle {
    id: line

    required property string text

    signal dismissed

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage
    border.color: Theme.badEdge
    color: Theme.badBg
    radius: Theme.rowRadius

    SymbolIcon {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.badInk
        size: Theme.smallIconSize
        symbol: "exclamationmark.triangle.fill"
        x: 10
    }

    Text {
        anchors.left: parent.left
        anchors.leftMargin: 34
        anchors.right: close.left
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.badInk
        elide: Text.ElideRight
        font.pixelSize: Theme.labelSize
        text: line.text
        textFormat: Text.PlainText
    }

    SmallButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        help: "Meldung schließen"
        tint: Theme.badInk

        onTriggered: line.dismissed()
    }
}
