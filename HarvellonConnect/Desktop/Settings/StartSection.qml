import QtQuick
import Harvellon.State

/// How the program is reached: the global key, and the start with the desktop.
Card {
    id: card

    required property AppState state

    readonly property bool troubled: state.globalHotkeyEnabled && state.hotkeyProblem !== ""

    Accessible.name: "Tastatur und Start"
    Accessible.role: Accessible.Grouping
    height: again.y + again.height

    SwitchRow {
        caption: card.troubled ? card.state.hotkeyProblem : "Systemweit aktiv, auch wenn die App im Hintergrund ist."
        fixed: card.state.management.fixesHotkey
        height: 54
        on: card.state.globalHotkeyEnabled
        text: "F19 oeffnet Harvellon Connect"
        troubled: card.troubled
        width: parent.width

        onToggled: wanted => card.state.globalHotkeyEnabled = wanted
    }

    SwitchRow {
        id: login

        fixed: card.state.management.fixesLoginItem
        height: fixed ? 54 : 38
        on: card.state.startsAtLogin
        text: "Beim Anmelden starten"
        width: parent.width
        y: 50

        onToggled: wanted => card.state.startsAtLogin = wanted
    }

    SwitchRow {
        id: again

        height: 38
        on: card.state.reconnectsAtStart
        text: "Beim Start wieder verbinden"
        width: parent.width
        y: login.y + login.height - 4

        onToggled: wanted => card.state.reconnectsAtStart = wanted
    }
}
