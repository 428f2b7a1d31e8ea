import QtQuick
import Harvellon.Desktop

/// The context menu of the activity log.
PopupMenu {
    id: menu

    required property LogSelection selection

    title: "Menü der Aktivitaet"

    MenuEntry {
        keys: PanelCommands.shown("Ctrl+C")
        text: "Kopieren"

        onTriggered: menu.selection.copyRequested(menu.selection.text())
    }

    MenuEntry {
        keys: PanelCommands.shown("Ctrl+A")
        text: "Alles auswählen"

        onTriggered: menu.selection.chooseAll()
    }
}
