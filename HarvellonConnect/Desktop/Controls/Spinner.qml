import QtQuick
import Harvellon.Desktop

/// Turns while it is seen.
SymbolIcon {
    id: spinner

    symbol: "spinner"

    RotationAnimator on rotation {
        duration: Theme.spinnerTurn
        from: 0
        loops: Animation.Infinite
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden && !Theme.still
        to: 360
    }
}
