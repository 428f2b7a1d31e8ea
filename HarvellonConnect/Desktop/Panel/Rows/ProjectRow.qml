import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// One project: its name and domain, whether it is mounted, and its actions.
Item {
    id: row

    required property AppState state
    required property string title
    required property string domain
    required property bool connected
    required property bool connecting
    required property date connectingSince
    required property int offers
    required property bool lost
    required property bool kept
    required property list<int> titleHits
    required property list<int> domainHits
    required property int pin
    required property bool lastPin
    required property int index

    property bool current: false
    /// Tab reaches the buttons of this row.
    property bool tabStop: current
    property alias hoveredButton: rail.hoveredButton
    readonly property int buttonColumnWidth: ActionTable.buttonColumnWidth

    readonly property real railStart: rail.x + ActionTable.firstSlot(offers)
    // Reserve room for three digits of seconds, so that the name does not move while the number grows.
    readonly property real markStart: connecting ? railStart - 12 - 128 : connected || lost ? mark.x : railStart
    readonly property string stateText: connected ? (kept ? "Noch verbunden" : "Gemountet") : connecting ? "Verbinde ..." : lost ? "Unterbrochen" : "Nicht verbunden"
    readonly property bool lit: pointer.hovered || current
    readonly property shownAction pinAction: pin > 0 ? ActionTable.unpin : ActionTable.pin
    readonly property real textEnd: (pinPlace.active ? pinPlace.x : markStart) - 12

    Accessible.description: stateText + (pin > 0 ? ", angeheftet" + (pinPlace.keys === "" ? "" : ", " + pinPlace.keys) : "")
    Accessible.name: title === domain ? title : title + ", " + domain
    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.selected: current
    height: Theme.rowHeight

    // A pooled row would still be visible to screen readers.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    Rectangle {
        anchors.bottom: parent.bottom
        color: row.lastPin ? Theme.outline : Theme.line
        height: row.lastPin ? 2 : 1
        visible: !row.lit
        width: row.width - 14
        x: Theme.gap
    }

    Box {
        anchors.fill: parent
        borderColor: row.current ? Theme.focus : "transparent"
        borderWidth: row.current ? 2 : 0
        color: pointer.hovered ? Theme.rowHover : Theme.card
        radius: Theme.rowRadius
        visible: row.lit
    }

    BodyLabel {
        elide: Text.ElideRight
        height: Theme.bodyLine
        text: HitMarkup.marked(row.title, row.titleHits, Theme.focus, row.title === row.domain ? Theme.secondary : Theme.ink)
        textFormat: Text.StyledText
        width: row.textEnd - x
        x: Theme.gap
        y: 4
    }

    CaptionLabel {
        color: Theme.ink
        elide: Text.ElideMiddle
        height: Theme.captionLine
        text: HitMarkup.marked(row.domain, row.domainHits, Theme.focus, Theme.secondary)
        textFormat: Text.StyledText
        width: row.textEnd - x
        x: Theme.gap
        y: 21
    }

    PinLoader {
        id: pinPlace

        action: row.pinAction
        active: row.pin > 0 || (pointer.hovered && (row.offers & 1 << row.pinAction.target) !== 0)
        buttons: rail
        place: row.pin
        sourceComponent: pinMark
        x: row.markStart - 8 - width
        y: (Theme.rowHeight - height) / 2
    }

    Component {
        id: pinMark

        PinMark {}
    }

    RowMarkLoader {
        id: mark

        active: row.connected || row.connecting || row.lost
        kept: row.kept
        since: row.connectingSince
        sourceComponent: row.connected ? mountMark : row.connecting ? connectingMark : lostMark
        x: row.railStart - 12 - width
        y: 10
    }

    Component {
        id: mountMark

        MountMark {}
    }

    Component {
        id: lostMark

        LostMark {}
    }

    Component {
        id: connectingMark

        ConnectingMark {}
    }

    RowButtons {
        id: rail

        connecting: row.connecting
        current: row.tabStop
        domain: row.domain
        height: row.height
        lost: row.lost
        offers: row.offers
        state: row.state
        x: row.width - 6 - width
    }

    HoverHandler {
        id: pointer
    }
}
