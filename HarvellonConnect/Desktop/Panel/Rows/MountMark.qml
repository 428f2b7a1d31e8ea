import QtQuick
import Harvellon.Desktop

Pill {
    id: mark

    readonly property RowMarkLoader loader: parent as RowMarkLoader

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.okBg
    ink: Theme.okInk
    text: loader?.kept ? "noch verbunden" : "Gemountet"

    sign: SymbolIcon {
        color: mark.ink
        size: 12
        symbol: "checkmark.circle.fill"
    }
}
