import QtQuick
import Harvellon.State

/// Program name, version, copyright, and a report for whoever helps.
Card {
    id: card

    required property Diagnosis diagnosis
    required property Management management
    required property string versionText

    Accessible.name: "Über"
    Accessible.role: Accessible.Grouping
    height: words.height + 2 * words.y

    Column {
        id: words

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

        CaptionLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            text: card.management.summary
            topPadding: 6
            visible: text !== ""
            width: parent.width
            wrapMode: Text.Wrap
        }

        Item {
            height: Theme.gap
            width: 1
        }

        Row {
            spacing: Theme.gap

            TextButton {
                enabled: !card.diagnosis.busy
                text: "Diagnose kopieren"

                onClicked: card.diagnosis.copy()
            }

            TextButton {
                enabled: !card.diagnosis.busy
                text: "Diagnose speichern"

                onClicked: card.diagnosis.save()
            }
        }

        CaptionLabel {
            Accessible.name: text
            Accessible.role: Accessible.AlertMessage
            text: card.diagnosis.message
            topPadding: 6
            visible: text !== ""
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
