pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Harvellon.State

/// The logins of this program, and the way to another one.
Card {
    id: card

    required property AppState state

    readonly property bool empty: state.accountList.count === 0

    Accessible.name: "Accounts"
    Accessible.role: Accessible.Grouping

    ListView {
        id: list

        Accessible.name: "Accounts"
        Accessible.role: Accessible.List
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        height: Math.min(contentHeight, card.height - y - 44)
        interactive: count > 2
        model: card.state.accountList
        visible: !card.empty
        width: parent.width
        y: 4

        T.ScrollBar.vertical: ListScrollBar {
            implicitWidth: Theme.scrollBarWidth
            needed: list.interactive
            rightPadding: 3
        }
        delegate: AccountRow {
            state: card.state
            width: list.width
        }
    }

    TextButton {
        text: "Account hinzufügen"
        visible: !card.empty && !card.state.isAuthenticating
        x: Theme.textStart
        y: list.y + list.height + 7

        onClicked: card.state.addAccount()
    }

    BodyLabel {
        id: waiting

        Accessible.name: text
        Accessible.role: Accessible.StaticText
        text: "Warte auf Browser-Login..."
        visible: card.state.isAuthenticating
        x: card.empty ? (card.width - width) / 2 : 50
        y: card.empty ? 38 : list.y + list.height + 14
    }

    Row {
        spacing: 8
        visible: card.state.isAuthenticating
        x: card.empty ? (card.width - width) / 2 : card.width - Theme.inset - width
        y: card.empty ? 66 : waiting.y + (waiting.height - height) / 2

        TextButton {
            text: "Adresse kopieren"

            onClicked: card.state.copyLoginAddress()
        }

        TextButton {
            text: "Abbrechen"

            onClicked: card.state.cancelLogin()
        }
    }

    Column {
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 4
        visible: card.empty
        width: parent.width - 2 * Theme.inset
        y: 18

        BodyLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            font.weight: Theme.titleWeight
            horizontalAlignment: Text.AlignHCenter
            text: "Nicht angemeldet"
            visible: !card.state.isAuthenticating
            width: parent.width
        }

        NoteLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            horizontalAlignment: Text.AlignHCenter
            text: "Melde dich an, um deine Projekte zu verwalten."
            visible: !card.state.isAuthenticating
            width: parent.width
        }

        Item {
            height: 8
            width: 1
        }

        TextButton {
            anchors.horizontalCenter: parent.horizontalCenter
            primary: true
            symbol: "arrow.right.circle.fill"
            text: "Mit Harvellon anmelden"
            visible: !card.state.isAuthenticating

            onClicked: card.state.addAccount()
        }
    }
}
