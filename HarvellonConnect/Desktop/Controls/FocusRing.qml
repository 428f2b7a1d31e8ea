import QtQuick

/// Says where the keyboard is: around its parent, 3 points outside.
Rectangle {
    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    border.color: Theme.focus
    border.width: 2
    radius: 10
}
