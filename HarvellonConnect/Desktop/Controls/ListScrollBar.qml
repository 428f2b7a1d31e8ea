import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// The scroll bar of a list, hidden from screen readers because the list itself announces its rows.
T.ScrollBar {
    id: bar

    /// Whether the list has more rows than it can show.
    required property bool needed
    property real thumbWidth: 3
    property color thumbColor: Theme.outline

    Accessible.ignored: true
    policy: needed ? T.ScrollBar.AlwaysOn : T.ScrollBar.AlwaysOff
    visible: needed

    contentItem: Item {
        Box {
            anchors.right: parent.right
            color: bar.thumbColor
            height: parent.height
            radius: width / 2
            width: bar.thumbWidth
        }
    }
}
