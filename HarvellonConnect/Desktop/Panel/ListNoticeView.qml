import QtQuick
import Harvellon.Desktop

/// What stands in the list's place when it has no rows.
Column {
    id: view

    required property listNotice notice

    Accessible.description: notice.text
    Accessible.name: notice.title
    Accessible.role: Accessible.StaticText
    spacing: 4
    visible: notice.title !== ""

    SymbolIcon {
        anchors.horizontalCenter: parent.horizontalCenter
        color: Theme.emptyIcon
        size: 28
        symbol: view.notice.symbol
    }

    Item {
        height: 10
        width: 1
    }

    Text {
        color: Theme.ink
        elide: Text.ElideMiddle
        font.pixelSize: Theme.bodySize
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        text: view.notice.title
        textFormat: Text.PlainText
        width: view.width
    }

    Text {
        color: Theme.secondary
        font.pixelSize: Theme.labelSize
        horizontalAlignment: Text.AlignHCenter
        text: view.notice.text
        textFormat: Text.PlainText
        width: view.width
        wrapMode: Text.Wrap
    }
}
