pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The context menu of a project's row: what the table of actions has for it.
PopupMenu {
    id: menu

    required property AppState state
    property string domain
    property bool editorsOffered: true ///< the last entry leads to them

    /// Opens at a place of `item`, for what is in the row now: a reload of the list may reuse the row.
    function openFor(row: ProjectRow, item: Item, place: point) {
        domain = row.domain;
        if (editorsOffered)
            takeMenu(count - 1);
        entries.model = ActionTable.menu(row.offers);
        editorsOffered = ActionTable.opensEditor(row.offers) && !openWith.programs.editorIsFixed;
        if (editorsOffered) {
            openWith.list();
            openWith.programs.look();
            addMenu(openWith);
        }
        openAt(item, place);
    }

    title: "Menü des Projekts"

    Repeater {
        id: entries

        MenuEntry {
            required property shownAction modelData
            required property int index

            keys: modelData.keys
            startsGroup: index > 0 && entries.model[index - 1].menuGroup !== modelData.menuGroup
            text: modelData.help

            onTriggered: menu.state.perform(modelData.target, menu.domain, false)
        }
    }

    OpenWithMenu {
        id: openWith

        domain: menu.domain
        programs: menu.state.programs
    }
}
