import QtQuick

/// What this is, and whose.
Card {
    id: card

    required property string versionText

    Accessible.name: "Über"
    Accessible.role: Accessible.Grouping

    Column {
        width: parent.width - 2 * Theme.inset
        x: Theme.inset
        y: 10

        Text {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            color: Theme.ink
            font.pixelSize: Theme.bodySize
            font.weight: Font.Medium
            text: "Harvellon Connect " + card.versionText
            textFormat: Text.PlainText
        }

        Text {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            color: Theme.secondary
            font.pixelSize: Theme.captionSize
            lineHeight: 14
            lineHeightMode: Text.FixedHeight
            text: "Harvellon Connect ist ein echt gewaltiges Helper Programm, das deinen Mac mit der Harvellon Welt verbindet. Einfach anmelden und schon geht dieses Tool ab wie Schnitzel."
            width: parent.width
            wrapMode: Text.Wrap
        }

    }

    Text {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        color: Theme.secondary
        font.pixelSize: Theme.captionSize
        text: "© 2026 Harvellon"
        y: 12
    }
}
