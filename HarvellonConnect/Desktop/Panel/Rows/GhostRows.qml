pragma ComponentBehavior: Bound
import QtQuick
import Harvellon.Desktop

/// Placeholder rows during the first load, where the real rows will stand.
Item {
    id: ghosts

    Accessible.name: "Projekte werden geladen ..."
    Accessible.role: Accessible.StaticText

    SequentialAnimation on opacity {
        loops: Animation.Infinite
        running: ghosts.visible && !Theme.still

        NumberAnimation {
            duration: Theme.pulse / 2
            easing.type: Easing.InOutQuad
            from: 1
            to: 0.55
        }

        NumberAnimation {
            duration: Theme.pulse / 2
            easing.type: Easing.InOutQuad
            from: 0.55
            to: 1
        }
    }

    Repeater {
        model: [[128, 180], [154, 145], [96, 132], [140, 190], [118, 172]]

        Item {
            id: ghost

            required property int index
            required property var modelData

            height: Theme.rowHeight
            opacity: 1 - index * 0.17
            width: ghosts.width
            y: index * Theme.rowHeight

            Box {
                color: Theme.ghost
                height: 9
                radius: 4
                width: ghost.modelData[0]
                x: Theme.gap
                y: 8
            }

            Box {
                color: Theme.ghost
                height: 7
                radius: 3
                width: ghost.modelData[1]
                x: Theme.gap
                y: 24
            }

            Repeater {
                model: ActionTable.ghostSlots

                Box {
                    required property int modelData

                    color: Theme.ghost
                    height: ActionTable.buttonColumnWidth
                    radius: ButtonLook.radius
                    width: ActionTable.buttonColumnWidth
                    x: ghost.width - 6 - ActionTable.railWidth + modelData
                    y: (Theme.rowHeight - Theme.buttonSide) / 2
                }
            }
        }
    }
}
