pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop

/// The buttons of a project's row: one for each action, those that the row offers are seen.
ButtonRail {
    id: rail

    /// A bit for each action: 1 << target.
    required property int offers
    required property bool connecting
    required property bool lost

    width: ActionTable.railWidth

    Repeater {
        model: ActionTable.actions

        RowButton {
            required property shownAction modelData

            action: modelData
            connecting: rail.connecting
            lost: rail.lost
            rail: rail
            visible: rail ? (rail.offers & 1 << action.target) !== 0 : false // no rail while the row is destroyed
        }
    }
}
