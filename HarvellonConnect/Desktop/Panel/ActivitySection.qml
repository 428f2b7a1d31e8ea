import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// What the program did, newest line in view.
Card {
    id: card

    required property AppState state
    required property PanelSpeech speech
    property bool isActivityExpanded: false

    function closeMenu() {
        lines.closeMenu();
    }

    Accessible.name: "Aktivitaet"
    Accessible.role: Accessible.Grouping
    clip: true
    height: isActivityExpanded ? 160 : 40

    Behavior on height {
        NumberAnimation {
            duration: Theme.slide
            easing.type: Easing.OutCubic
        }
    }

    HeadingLabel {
        id: heading

        font.pixelSize: Theme.bodySize
        height: 40
        text: "Aktivitaet"
        x: Theme.inset
    }

    NoteLabel {
        readonly property int level: card.state.activityLog.lastLevel

        Accessible.name: text
        Accessible.role: Accessible.StaticText
        anchors.left: heading.right
        anchors.leftMargin: Theme.inset
        anchors.right: buttons.left
        anchors.rightMargin: Theme.gap
        color: level < 2 ? Theme.secondary : Theme.levels[level]
        elide: Text.ElideRight
        height: 40
        opacity: card.isActivityExpanded ? 0 : 1
        text: card.state.activityLog.lastLine
        verticalAlignment: Text.AlignVCenter
        visible: opacity > 0 && text !== ""

        Behavior on opacity {
            NumberAnimation {
                duration: Theme.slide
            }
        }
    }

    Row {
        id: buttons

        anchors.right: parent.right
        anchors.rightMargin: 4
        spacing: 4
        y: 8

        LinkButton {
            text: card.isActivityExpanded ? "Ausblenden" : "Anzeigen"

            onClicked: card.isActivityExpanded = !card.isActivityExpanded
        }

        LinkButton {
            enabled: card.state.activityLog.count > 0
            text: "Leeren"

            onClicked: card.state.activityLog.clear()
        }
    }

    NoteLabel {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        text: "Aktionen erscheinen hier bei Verbinden oder Trennen."
        visible: card.isActivityExpanded && card.state.activityLog.count === 0
        x: Theme.inset
        y: 42
    }

    ActivityLines {
        id: lines

        height: 112
        log: card.state.activityLog
        speech: card.speech
        visible: card.isActivityExpanded
        width: parent.width
        y: 40

        onCopyRequested: text => card.state.copyText(text)
    }
}
