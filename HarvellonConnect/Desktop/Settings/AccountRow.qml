import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// A login: choosing it makes it the active one.
T.ItemDelegate {
    id: row

    required property AppState state
    required property string accountID
    required property string displayName
    required property string email
    required property bool active

    property bool asking: false

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

    background: Box {
        borderColor: row.visualFocus ? Theme.focus : "transparent"
        borderWidth: row.visualFocus ? 2 : 0
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
        font.weight: row.active ? Theme.titleWeight : Theme.nameWeight
        height: Theme.bodyLine
        text: row.displayName
        width: (row.asking ? confirm.x : remove.x) - 12 - x
        x: Theme.textStart
        y: row.email || row.asking ? 4 : 12
    }

    CaptionLabel {
        elide: Text.ElideMiddle
        height: Theme.captionLine
        color: row.asking ? Theme.danger : Theme.secondary
        text: row.asking ? "Account wirklich entfernen?" : row.email
        width: (row.asking ? confirm.x : remove.x) - 12 - x
        x: Theme.textStart
        y: 21
    }

    TextButton {
        id: confirm

        Accessible.description: "Account wirklich entfernen? " + row.displayName
        anchors.right: remove.left
        anchors.rightMargin: 6
        dangerous: true
        text: "Entfernen"
        visible: row.asking
        y: 6

        onClicked: row.state.removeAccount(row.accountID)
    }

    // The way out stands where the pointer is, so a double click removes nothing.
    TextButton {
        id: remove

        Accessible.description: row.displayName
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        dangerous: !row.asking
        text: row.asking ? "Abbrechen" : "Account entfernen"
        y: 6

        Keys.onEscapePressed: event => {
            event.accepted = row.asking;
            row.asking = false;
        }
        onClicked: row.asking = !row.asking
    }
}
