import QtQuick
import Harvellon.Desktop

/// What stands in the list's place when it has no rows.
Column {
    id: view

    required property listNotice notice

    signal retryRequested

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

    BodyLabel {
        elide: Text.ElideMiddle
        horizontalAlignment: Text.AlignHCenter
        text: view.notice.title
        width: view.width
    }

    NoteLabel {
        horizontalAlignment: Text.AlignHCenter
        text: view.notice.text
        width: view.width
        wrapMode: Text.Wrap
    }

    Item {
        height: 8
        visible: retry.visible
        width: 1
    }

    TextButton {
        id: retry

        anchors.horizontalCenter: parent.horizontalCenter
        text: "Erneut versuchen"
        visible: view.notice.retry

        onClicked: view.retryRequested()
    }
}
