import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The signed-in user's badge, or the button to sign in.
Card {
    id: card

    required property AppState state
    required property PanelContent content

    function focusSignIn() {
        signIn.forceActiveFocus(Qt.TabFocusReason);
    }

    Accessible.name: "Account"
    Accessible.role: Accessible.Grouping

    UserBadgeView {
        anchors.fill: parent
        loading: card.state.isLoading
        name: card.content.personName
        projectCount: card.content.firstLoad ? -1 : card.state.projectCount
        showStatus: card.state.signedIn
        visible: card.content.badgeShown
    }

    Item {
        anchors.fill: parent
        visible: !card.content.badgeShown

        Box {
            color: Theme.bg
            height: Theme.pictureSide
            radius: width / 2
            width: Theme.pictureSide
            x: 11
            y: 8

            SymbolIcon {
                anchors.centerIn: parent
                color: Theme.secondary
                size: Theme.smallIconSize
                symbol: "person.fill"
            }
        }

        BodyLabel {
            Accessible.name: text
            Accessible.role: Accessible.StaticText
            anchors.verticalCenter: parent.verticalCenter
            font.weight: Theme.titleWeight
            text: card.state.isAuthenticating ? "Warte auf Browser-Login..." : "Nicht angemeldet"
            x: Theme.textStart
        }

        TextButton {
            id: signIn

            anchors.right: parent.right
            anchors.rightMargin: 7
            anchors.verticalCenter: parent.verticalCenter
            primary: true
            text: "Mit Harvellon anmelden"
            visible: !card.state.isAuthenticating

            onClicked: card.state.addAccount()
            onVisibleChanged: if (visible) {
                card.focusSignIn();
            }
        }

        TextButton {
            anchors.right: cancel.left
            anchors.rightMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            text: "Adresse kopieren"
            visible: card.state.isAuthenticating

            onClicked: card.state.copyLoginAddress()
        }

        TextButton {
            id: cancel

            anchors.right: parent.right
            anchors.rightMargin: 7
            anchors.verticalCenter: parent.verticalCenter
            text: "Abbrechen"
            visible: card.state.isAuthenticating

            onClicked: card.state.cancelLogin()
            onVisibleChanged: if (visible) {
                forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }
}
