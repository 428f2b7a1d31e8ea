pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The editors that a project can be opened with.
PopupMenu {
    id: menu

    required property ProgramSettings programs
    property string domain

    /// For the domain as it is now.
    function list() {
        entries.model = programs.editorsFor(domain);
    }

    modal: false
    title: "Öffnen mit …"

    Connections {
        // Later: a choice changes them, too, and the entry that was pressed has yet to close the menu.
        function onChanged() {
            Qt.callLater(menu.list); // qmllint disable
        }

        target: menu.programs
    }

    Repeater {
        id: entries

        MenuEntry {
            required property var modelData

            // Not by Accessible: the control writes its own state there as soon as a screen reader runs.
            checkable: true
            checked: modelData.chosen
            keys: modelData.chosen ? "✓" : ""
            text: modelData.name

            onTriggered: menu.programs.openWith(menu.domain, modelData.key)
        }
    }
}
