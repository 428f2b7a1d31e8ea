import QtQuick
import Harvellon.Desktop

/// Shows that a connect is in progress, and for how long.
Pill {
    id: mark

    readonly property RowMarkLoader loader: parent as RowMarkLoader

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
        since: mark.loader?.since ?? new Date()
    }
}
