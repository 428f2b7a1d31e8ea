import QtQuick
import Harvellon.Desktop
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
            keys: PanelCommands.refresh
            symbol: "arrow.clockwise"

            onTriggered: header.state.refresh()
        }

        IconButton {
            help: "Auf Updates prüfen"
            keys: PanelCommands.updates
            symbol: "arrow.down.circle"

            onTriggered: header.updatesRequested()
        }

        IconButton {
            help: "Einstellungen"
            keys: PanelCommands.settings
            symbol: "gearshape"

            onTriggered: header.settingsRequested()
        }

        TextButton {
            Accessible.description: PanelCommands.quit
            text: "Beenden"

            onClicked: header.quitRequested()
        }
    }
}
