import QtQuick

/// Program name, version, and copyright.
Card {
    id: card

    required property string versionText

    Accessible.name: "Über"
    Accessible.role: Accessible.Grouping

    Column {
        width: parent.width - 2 * Theme.inset
        x: Theme.inset
        y: 10

        BodyLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            text: "Harvellon Connect " + card.versionText
        }

        CaptionLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            lineHeight: 14
            lineHeightMode: Text.FixedHeight
            text: "Harvellon Connect ist ein echt gewaltiges Helper Programm, das deinen Mac mit der Harvellon Welt verbindet. Einfach anmelden und schon geht dieses Tool ab wie Schnitzel."
            verticalAlignment: Text.AlignTop
            width: parent.width
            wrapMode: Text.Wrap
        }

    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        text: "© 2026 Harvellon"
        y: 12
    }
}
