pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Harvellon.State

/// The lines of the activity log, the newest at the bottom and in view.
ListView {
    id: lines

    required property ActivityLog log

    signal copyRequested(text: string)

    Accessible.name: "Aktivitaet"
    Accessible.role: Accessible.List
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 0
    clip: true
    model: visible ? log : null
    reuseItems: true

    T.ScrollBar.vertical: ListScrollBar {
        implicitWidth: Theme.scrollBarWidth
        minimumSize: 0.1
        needed: lines.contentHeight > lines.height
        rightPadding: 3
    }
    delegate: ActivityRow {
        width: lines.width

        onCopied: lines.copyRequested(message)
    }

    // Not by the count, which stands still when the log is full.
    onModelChanged: toEnd.restart()

    Connections {
        function onRowsInserted() {
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
}
