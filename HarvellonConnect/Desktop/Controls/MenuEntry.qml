import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// One entry of a context menu, with its key.
T.MenuItem {
    id: entry

    property string keys: subMenu ? "›" : ""
    /// A line parts it from the entry above.
    property bool startsGroup: subMenu !== null

    Accessible.description: subMenu ? "Untermenü" : keys
    Accessible.name: text
    Accessible.onPressAction: entry.triggered()
    font.family: Theme.family
    font.pixelSize: Theme.labelSize
    implicitHeight: 28 + topPadding
    implicitWidth: 220
    topPadding: startsGroup ? 9 : 0

    Keys.forwardTo: ReturnKey {
        onPressed: entry.clicked()
    }

    background: Item {
        Rectangle {
            color: Theme.line
            height: 1
            visible: entry.startsGroup
            width: parent.width - 2 * x
            x: Theme.gap
            y: 4
        }

        Box {
            borderColor: entry.highlighted ? Theme.focus : "transparent"
            borderWidth: 2
            color: entry.highlighted ? Theme.rowHover : "transparent"
            height: parent.height - y
            radius: Theme.tipRadius
            width: parent.width
            y: entry.topPadding
        }
    }
    contentItem: Item {
        NoteLabel {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.ink
            text: entry.text
            x: 10
        }

        CaptionLabel {
            anchors.right: parent.right
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            text: entry.keys
        }
    }
}
