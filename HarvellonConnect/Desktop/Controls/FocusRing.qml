import QtQuick
import Harvellon.Desktop

/// The focus ring around its parent.
Rectangle {
    anchors.fill: parent
    anchors.margins: -ButtonLook.ringBleed
    color: "transparent"
    border.color: Theme.focus
    border.width: ButtonLook.ringWidth
    radius: ButtonLook.ringRadius
}
