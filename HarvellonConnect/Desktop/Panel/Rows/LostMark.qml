import QtQuick
import Harvellon.Desktop

/// Shows that the mount has ended by itself.
Pill {
    id: mark

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.badBg
    ink: Theme.badInk
    text: "Unterbrochen"

    sign: SymbolIcon {
        color: mark.ink
        size: 12
        symbol: "exclamationmark.triangle.fill"
    }
}
