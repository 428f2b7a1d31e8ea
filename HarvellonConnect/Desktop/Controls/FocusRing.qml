import QtQuick
import Harvellon.Desktop

/// The focus ring around its parent.
Box {
    anchors.fill: parent
    anchors.margins: -ButtonLook.ringBleed
    color: "transparent"
    borderColor: Theme.focus
    borderWidth: ButtonLook.ringWidth
    radius: ButtonLook.ringRadius
}
