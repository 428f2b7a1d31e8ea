import QtQuick
import Harvellon.Desktop

Pill {
    id: mark

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.okBg
    ink: Theme.okInk
    text: "Gemountet"

    sign: SymbolIcon {
        color: mark.ink
        size: 12
        symbol: "checkmark.circle.fill"
    }
}
