import QtQuick
import Harvellon.Desktop

/// Says that a connect is under way, and for how long.
Pill {
    id: mark

    readonly property MarkSlot slot: parent as MarkSlot

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.busyBg
    ink: Theme.busyInk
    text: time.text

    sign: Spinner {
        color: mark.ink
        size: 12
    }

    ConnectingTime {
        id: time

        running: mark.visible && mark.Window.visibility !== Window.Hidden
        since: mark.slot?.since ?? new Date()
    }
}
