pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// The card with the list of projects, or with a notice while there are none.
Card {
    id: card

    required property AppState state
    required property PanelContent content
    required property PanelKeys keys
    required property PanelSpeech speech

    /// Opens the context menu of a row, at a place in the list or below the row's name.
    function openMenu(index: int, place: var) {
        const row = list.itemAtIndex(index) as ProjectRow;
        if (row === null)
            return;
        keys.currentRow = index;
        if (menu.item === null)
            menu.setSource("RowMenu.qml", {state: card.state});
        const corner = place === null ? row.mapToItem(card, Theme.inset, Theme.rowHeight - 4) : list.mapToItem(card, place);
        (menu.item as RowMenu).openFor(row, card, corner);
    }

    function closeMenu() {
        (menu.item as RowMenu)?.close();
    }

    /// Of the rows that stand above the list.
    readonly property int keptHeight: state.visibleProjects.keptCount * Theme.rowHeight

    Accessible.name: "Projekte"
    Accessible.role: Accessible.List

    ListView {
        id: list

        /// The list stands at a multiple of so many points: 4 are whole pixels at 1.25, 1.5 and 1.75 pixels to
        /// the point, where others lie between two and blur the rows.
        readonly property int step: Screen.devicePixelRatio % 1 === 0 ? 1 : 4

        function align() {
            contentY = Math.ceil(contentY / step) * step;
        }

        anchors.bottomMargin: 4
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        anchors.topMargin: 4
        bottomMargin: (step - height % step) % step
        boundsBehavior: Flickable.StopAtBounds
        cacheBuffer: 0
        clip: true
        currentIndex: -1
        keyNavigationEnabled: false
        model: card.state.visibleProjects
        pixelAligned: true
        reuseItems: true

        T.ScrollBar.vertical: ListScrollBar {
            id: bar

            readonly property bool lit: pressed || hovered

            bottomPadding: 4
            height: list.height
            implicitWidth: 9
            minimumSize: 0.08
            needed: list.contentHeight > list.height
            parent: card
            rightPadding: 2
            thumbColor: lit ? Theme.switchOff : Theme.outline
            thumbWidth: lit ? 5 : 3
            topPadding: 4
            x: card.width - width - 1
            y: list.y
        }
        delegate: ProjectRow {
            current: card.keys.currentRow === index
            state: card.state
            tabStop: index === Math.max(0, card.keys.currentRow)
            width: list.width
        }

        onMovementEnded: align()

        TapHandler {
            acceptedButtons: Qt.RightButton

            onTapped: event => {
                const place = list.mapToItem(list.contentItem, event.position);
                card.openMenu(list.indexAt(place.x, place.y), event.position);
            }
        }

        Connections {
            function onMenuRequested() {
                card.openMenu(card.keys.currentRow, null);
            }

            function onCurrentRowChanged() {
                const row = card.keys.currentRow;
                list.positionViewAtIndex(row, ListView.Contain);
                list.align();
                card.speech.announceFocus(row < 0 ? card.Window.activeFocusItem : list.itemAtIndex(row));
            }

            target: card.keys
        }
    }

    Loader {
        id: menu
    }

    Rectangle {
        anchors.bottom: list.bottom
        anchors.left: list.left
        anchors.right: list.right
        height: 18
        visible: !list.atYEnd

        gradient: Gradient {
            GradientStop {
                color: Qt.alpha(Theme.card, 0)
                position: 0
            }

            GradientStop {
                color: Theme.card
                position: 1
            }
        }
    }

    Loader {
        active: card.content.firstLoad
        anchors.fill: list
        anchors.topMargin: card.keptHeight

        source: "GhostRows.qml"
    }

    ListNoticeView {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: card.keptHeight / 2
        notice: card.content.notice
        room: card.height - card.keptHeight
        state: card.state
        width: parent.width - 80
    }
}
