pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// Helps with a server that does not let a project in: the failure, the key to enter there, and a check.
FocusScope {
    id: alert

    required property AccessHelp access

    Accessible.description: access.text
    Accessible.name: access.title
    Accessible.role: Accessible.AlertMessage
    focus: true
    height: 20 + column.height + 20
    width: 536 // a fingerprint fits into one line

    Keys.onEscapePressed: alert.access.close()

    Rectangle {
        anchors.fill: parent
        color: Theme.bg
    }

    SymbolIcon {
        color: Theme.warn
        size: 28
        symbol: "exclamationmark.triangle.fill"
        x: Theme.settingsMargin
        y: 20
    }

    Column {
        id: column

        spacing: 12
        width: parent.width - x - Theme.settingsMargin
        x: 64
        y: 20

        HeadingLabel {
            text: alert.access.title
            width: parent.width
            wrapMode: Text.Wrap
        }

        TextEdit {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            activeFocusOnPress: false
            color: Theme.ink
            font.pixelSize: Theme.labelSize
            readOnly: true
            selectByMouse: true
            selectedTextColor: Theme.primaryInk
            selectionColor: Theme.focus
            text: alert.access.text
            textFormat: TextEdit.PlainText
            width: parent.width
            wrapMode: TextEdit.Wrap
        }

        NoteLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            text: alert.access.keyText
            width: parent.width
            wrapMode: Text.Wrap
        }

        Card {
            id: outcome

            height: findings.height + 2 * findings.y
            visible: alert.access.finding !== ""
            width: parent.width

            Spinner {
                color: Theme.secondary
                size: Theme.smallIconSize
                visible: alert.access.checking
                x: Theme.inset
                y: 11
            }

            SymbolIcon {
                color: alert.access.works ? Theme.okInk : Theme.danger
                size: Theme.smallIconSize
                symbol: alert.access.works ? "checkmark.circle.fill" : "exclamationmark.triangle.fill"
                visible: !alert.access.checking
                x: Theme.inset
                y: 11
            }

            Column {
                id: findings

                spacing: 8
                width: parent.width - x - Theme.inset
                x: 40
                y: 11

                NoteLabel {
                    Accessible.name: text
                    Accessible.role: Accessible.AlertMessage
                    color: Theme.ink
                    text: alert.access.finding
                    width: parent.width
                    wrapMode: Text.Wrap
                }

                Fingerprints {
                    keys: alert.access.knownServerKeys
                    title: "Bisher"
                    visible: keys !== ""
                    width: parent.width
                }

                Fingerprints {
                    keys: alert.access.serverKey
                    title: "Jetzt"
                    visible: keys !== ""
                    width: parent.width
                }

                NoteLabel {
                    Accessible.name: text
                    Accessible.role: Accessible.StaticText
                    text: "Harvellon Connect vertraut danach nur noch diesem Schlüssel."
                    visible: alert.access.asksForTrust
                    width: parent.width
                    wrapMode: Text.Wrap
                }

                TextButton {
                    dangerous: true
                    text: alert.access.asksForTrust ? "Wirklich übernehmen" : "Neuen Schlüssel übernehmen"
                    visible: alert.access.serverKey !== ""

                    onClicked: alert.access.trust()
                }
            }
        }

        // From right to left: the most useful button first, the one that changes nothing last.
        Row {
            anchors.right: parent.right
            layoutDirection: Qt.RightToLeft
            spacing: Theme.gap

            TextButton {
                enabled: !alert.access.checking
                focus: true
                primary: true
                text: "Zugang prüfen"

                onClicked: alert.access.check()
            }

            TextButton {
                text: "Schlüssel kopieren"
                visible: alert.access.keyIsKnown

                onClicked: alert.access.copyKey()
            }

            TextButton {
                text: alert.access.keyOffer
                visible: text !== ""

                onClicked: alert.access.makeKey()
            }

            TextButton {
                text: "Schließen"

                onClicked: alert.access.close()
            }
        }
    }
}
