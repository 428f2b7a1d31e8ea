import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// A login: choosing it makes it the active one.
T.ItemDelegate {
    id: row

    required property AppState state
    property bool removable: true
    required property string accountID
    required property string displayName
    required property string email
    required property bool active

    Accessible.description: (active ? "Aktiver Account" : "Zu diesem Account wechseln") + (email ? ", " + email : "")
    Accessible.name: displayName
    Accessible.selectable: true
    Accessible.selected: active
    Accessible.onPressAction: row.clicked()
    focusPolicy: Qt.TabFocus
    height: 42

    Keys.forwardTo: ReturnKey {
        onPressed: row.clicked()
    }
    onClicked: state.switchAccount(accountID)

    background: Rectangle {
        border.color: row.visualFocus ? Theme.focus : "transparent"
        border.width: row.visualFocus ? 2 : 0
        color: row.hovered ? Theme.rowHover : Theme.card
        radius: Theme.rowRadius
        width: row.width - 12
        x: 6
    }

    SymbolIcon {
        color: row.active ? Theme.okInk : Theme.secondary
        size: 24
        symbol: row.active ? "person.crop.circle.badge.checkmark" : "person.crop.circle"
        x: Theme.inset
        y: 9
    }

    BodyLabel {
        elide: Text.ElideRight
        font.weight: row.active ? Font.DemiBold : Font.Medium
        height: Theme.bodyLine
        text: row.displayName
        width: remove.x - 12 - x
        x: Theme.textStart
        y: row.email ? 4 : 12
    }

    CaptionLabel {
        elide: Text.ElideMiddle
        height: Theme.captionLine
        text: row.email
        width: remove.x - 12 - x
        x: Theme.textStart
        y: 21
    }

    TextButton {
        id: remove

        Accessible.description: row.displayName
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        dangerous: true
        text: "Account entfernen"
        y: 6

        onClicked: if (row.removable) {
            row.state.removeAccount(row.accountID);
        }
    }
}
