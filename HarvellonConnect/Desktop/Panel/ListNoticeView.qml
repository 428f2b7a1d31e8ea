import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// What stands in the list's place when it has no rows.
Column {
    id: view

    required property AppState state
    required property listNotice notice
    /// How high it may get; on a low screen there is no room for the steps.
    required property real room

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

        onClicked: view.state.refresh()
    }

    Item {
        height: 20
        visible: steps.wanted
        width: 1
    }

    Loader {
        id: steps

        readonly property bool wanted: view.notice.steps && view.room > 280

        anchors.horizontalCenter: parent.horizontalCenter
        visible: wanted
        width: Math.min(parent.width, 440)

        onWantedChanged: {
            if (wanted)
                setSource("SetupStepsView.qml", {state: view.state});
            else
                source = "";
        }
    }
}
