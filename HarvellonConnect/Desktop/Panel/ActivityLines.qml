pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// The lines of the activity log, the newest at the bottom and in view. Lines can be selected and copied.
ListView {
    id: lines

    required property ActivityLog log
    required property PanelSpeech speech

    /// Somebody reads older lines, which must not move away.
    readonly property bool isRead: activeFocus && selection.last >= 0 && selection.last < count - 1

    signal copyRequested(text: string)

    function rowAt(x: real, y: real): int {
        const place = mapToItem(contentItem, x, y);
        return indexAt(place.x, place.y);
    }

    function openMenu(place: point) {
        if (menu.item === null)
            menu.setSource("LogMenu.qml", {selection: selection});
        (menu.item as PopupMenu).openAt(lines, place);
    }

    function closeMenu() {
        (menu.item as PopupMenu)?.close();
    }

    Accessible.name: "Aktivitaet"
    Accessible.role: Accessible.List
    activeFocusOnTab: count > 0
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 0
    clip: true
    currentIndex: -1
    keyNavigationEnabled: false
    model: visible ? log : null
    reuseItems: true

    Keys.onPressed: event => event.accepted = selection.press(event.key, event.modifiers)
    T.ScrollBar.vertical: ListScrollBar {
        implicitWidth: Theme.scrollBarWidth
        minimumSize: 0.1
        needed: lines.contentHeight > lines.height
        rightPadding: 3
    }
    delegate: ActivityRow {
        current: lines.activeFocus && index === selection.current
        selected: index >= selection.first && index <= selection.last
        selectedAlone: selected && selection.first === selection.last
        width: lines.width

        onCopied: lines.copyRequested(message)
    }

    onActiveFocusChanged: {
        if (activeFocus && selection.current < 0)
            selection.choose(count - 1, false);
        else if (!activeFocus && !menu.isOpen)
            selection.clear();
    }
    // Not by the count, which stands still when the log is full.
    onModelChanged: toEnd.restart()

    LogSelection {
        id: selection

        log: lines.log

        onCopyRequested: text => lines.copyRequested(text)
        onChosen: showCurrent.restart()
        onMenuRequested: lines.openMenu(Qt.point(Theme.inset, Theme.inset))
    }

    MouseArea {
        function choose(mouse: MouseEvent, extend: bool) {
            const row = lines.rowAt(mouse.x, mouse.y);
            if (row >= 0)
                selection.choose(row, extend);
        }

        height: lines.height
        parent: lines.contentItem
        preventStealing: true // a drag selects
        width: lines.width
        y: lines.contentY
        z: -1

        onPositionChanged: mouse => choose(mouse, true)
        onPressed: mouse => {
            choose(mouse, (mouse.modifiers & Qt.ShiftModifier) !== 0);
            lines.forceActiveFocus(Qt.MouseFocusReason);
        }
    }

    // Not by the mouse area: two buttons joined by | are looked up by name, which takes 170 KB.
    TapHandler {
        acceptedButtons: Qt.RightButton

        onTapped: event => {
            const row = lines.rowAt(event.position.x, event.position.y);
            if (row >= 0 && (row < selection.first || row > selection.last))
                selection.choose(row, false);
            lines.forceActiveFocus(Qt.MouseFocusReason);
            if (selection.current >= 0)
                lines.openMenu(event.position);
        }
    }

    Loader {
        id: menu

        readonly property bool isOpen: (item as PopupMenu)?.visible ?? false
    }

    Connections {
        function onRowsInserted() {
            if (!lines.isRead)
                toEnd.restart();
        }

        target: lines.log
    }

    /// Not at once: the list has not laid out the new line yet.
    Timer {
        id: toEnd

        interval: 0

        onTriggered: lines.positionViewAtEnd()
    }

    /// Not at once either: a line that is selected alone grows.
    Timer {
        id: showCurrent

        interval: 0

        onTriggered: {
            if (selection.current < 0)
                return;
            lines.positionViewAtIndex(selection.current, ListView.Contain);
            lines.speech.announceFocus(lines.itemAtIndex(selection.current));
        }
    }
}
