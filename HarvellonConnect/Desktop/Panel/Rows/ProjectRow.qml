import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// One project: what it is called, whether it is mounted, and what can be done with it.
Item {
    id: row

    required property AppState state
    required property string title
    required property string domain
    required property bool connected
    required property bool connecting
    required property date connectingSince
    required property var actions
    required property int index

    property bool current: false
    /// Tab reaches the buttons of this row.
    property bool tabStop: current
    property alias hoveredButton: rail.hoveredButton

    readonly property real railStart: rail.x + (actions.ssh ? 0 : Theme.slotCache)
    // Room for three digits of seconds, so that the name stands still while they grow.
    readonly property real markStart: connecting ? railStart - 12 - 128 : connected ? mark.x : railStart
    readonly property bool lit: pointer.hovered || current

    Accessible.description: connected ? "Gemountet" : connecting ? "Verbinde ..." : "Nicht verbunden"
    Accessible.name: title === domain ? title : title + ", " + domain
    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.selected: current
    height: Theme.rowHeight

    // A row kept for later use would still be told to screen readers.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    Rectangle {
        anchors.bottom: parent.bottom
        color: Theme.line
        height: 1
        visible: !row.lit
        width: row.width - 14
        x: 8
    }

    Rectangle {
        anchors.fill: parent
        border.color: row.current ? Theme.focus : "transparent"
        border.width: row.current ? 2 : 0
        color: pointer.hovered ? Theme.rowHover : Theme.card
        radius: Theme.rowRadius
        visible: row.lit
    }

    Text {
        color: Theme.ink
        elide: Text.ElideRight
        font.pixelSize: Theme.bodySize
        font.weight: Font.Medium
        height: 17
        text: row.title
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
        width: row.markStart - 12 - x
        x: 8
        y: 4
    }

    Text {
        color: Theme.secondary
        elide: Text.ElideMiddle
        font.pixelSize: Theme.captionSize
        height: 14
        text: row.domain
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
        width: row.markStart - 12 - x
        x: 8
        y: 21
    }

    MarkSlot {
        id: mark

        active: row.connected || row.connecting
        since: row.connectingSince
        sourceComponent: row.connected ? mountMark : connectingMark
        x: row.railStart - 12 - width
        y: 10
    }

    Component {
        id: mountMark

        MountMark {}
    }

    Component {
        id: connectingMark

        ConnectingMark {}
    }

    ButtonRail {
        id: rail

        current: row.tabStop
        domain: row.domain
        height: row.height
        state: row.state
        width: Theme.railWidth
        x: row.width - 6 - width

        RowButton {
            enabled: !row.connecting
            facts: RowButtons.connectButton
            opacity: enabled ? 1 : 0.38
            rail: rail
            tint: Theme.tintConnect
            visible: row.actions.connect
            x: Theme.slotConnect
        }

        RowButton {
            facts: RowButtons.disconnectButton
            hoverTint: Theme.danger
            rail: rail
            tint: Theme.tintDisconnect
            visible: row.actions.disconnect
            x: Theme.slotConnect
        }

        RowButton {
            facts: RowButtons.vscode
            rail: rail
            tint: Theme.tintVSCode
            visible: row.actions.vscode
            x: Theme.slotVSCode
        }

        RowButton {
            facts: RowButtons.finder
            rail: rail
            tint: Theme.tintFinder
            visible: row.actions.finder
            x: Theme.slotFinder
        }

        RowButton {
            facts: RowButtons.ssh
            rail: rail
            tint: Theme.tintSSH
            visible: row.actions.ssh
            x: Theme.slotSSH
        }

        RowButton {
            facts: RowButtons.database
            rail: rail
            tint: Theme.tintDB
            visible: row.actions.database
            x: Theme.slotDB
        }

        RowButton {
            facts: RowButtons.cache
            rail: rail
            tint: Theme.tintCache
            visible: row.actions.cache
            x: Theme.slotCache
        }

        RowButton {
            facts: RowButtons.safari
            rail: rail
            tint: Theme.tintSafari
            visible: row.actions.safari
            x: Theme.slotSafari
        }
    }

    HoverHandler {
        id: pointer
    }
}
