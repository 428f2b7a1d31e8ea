import QtQuick
import Harvellon.Desktop

/// Loads a row's pin, which only pinned rows and the one under the pointer have.
Loader {
    property shownAction action
    property ButtonRail buttons
    /// The place among the pinned projects, from 1; 0 for none.
    property int place
    /// What connects or opens the project from anywhere in the panel; empty for none.
    readonly property string keys: place > 0 && place < 10 ? PanelCommands.shown("Ctrl+" + place) : ""
}
