pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// An alert that explains a problem and offers ways to solve it; its last button changes nothing.
FocusScope {
    id: alert

    required property AppState state
    required property string title
    required property string text
    required property list<string> buttons

    Accessible.description: text
    Accessible.name: title
    Accessible.role: Accessible.AlertMessage
    focus: true
    height: 20 + column.height + 20
    width: 480

    Keys.onEscapePressed: alert.state.answerGuidance(-1)

    Rectangle {
        anchors.fill: parent
        color: Theme.bg
    }

    SymbolIcon {
        color: Theme.warn
        size: 28
        symbol: "exclamationmark.triangle.fill"
        x: Theme.settingsMargin
        y: 20
    }

    Column {
        id: column

        spacing: 12
        width: parent.width - x - Theme.settingsMargin
        x: 64
        y: 20

        HeadingLabel {
            text: alert.title
            width: parent.width
            wrapMode: Text.Wrap
        }

        TextEdit {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            activeFocusOnPress: false
            color: Theme.ink
            font.pixelSize: Theme.labelSize
            readOnly: true
            selectByMouse: true
            selectedTextColor: Theme.primaryInk
            selectionColor: Theme.focus
            text: alert.text
            textFormat: TextEdit.PlainText
            width: parent.width
            wrapMode: TextEdit.Wrap
        }

        // From right to left: the most useful button first, the one that changes nothing last.
        Row {
            anchors.right: parent.right
            layoutDirection: Qt.RightToLeft
            spacing: Theme.gap

            Repeater {
                model: alert.buttons

                TextButton {
                    required property int index
                    required property string modelData

                    focus: index === 0
                    primary: index === 0
                    text: modelData

                    onClicked: alert.state.answerGuidance(index)
                }
            }
        }
    }
}
