import QtQuick
import Harvellon.State

/// The title of the panel, and what concerns the whole program.
Item {
    id: header

    required property AppState state

    signal settingsRequested
    signal updatesRequested
    signal quitRequested

    HeadingLabel {
        height: 20
        text: "Harvellon Connect"
    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        height: Theme.captionLine
        text: "Projekte verbinden, mounten und öffnen"
        y: 21
    }

    Row {
        anchors.right: parent.right
        spacing: 6
        y: 3

        IconButton {
            help: "Aktualisieren"
            keys: "Strg+R"
            symbol: "arrow.clockwise"

            onTriggered: header.state.refresh()
        }

        IconButton {
            help: "Auf Updates prüfen"
            keys: "Strg+U"
            symbol: "arrow.down.circle"

            onTriggered: header.updatesRequested()
        }

        IconButton {
            help: "Einstellungen"
            keys: "Strg+,"
            symbol: "gearshape"

            onTriggered: header.settingsRequested()
        }

        TextButton {
            Accessible.description: "Strg+Q"
            text: "Beenden"

            onClicked: header.quitRequested()
        }
    }
}
