import QtQuick
import Harvellon.Desktop

/// A short label with a small symbol before it, on a rounded coloured background.
Box {
    id: pill

    required property string text
    required property color ink
    property alias sign: sign.data
    property real textWidth: label.implicitWidth

    implicitHeight: 20
    implicitWidth: 6 + 12 + 5 + textWidth + 9
    radius: height / 2

    Item {
        id: sign

        anchors.verticalCenter: parent.verticalCenter
        height: 12
        width: 12
        x: 6
    }

    CaptionLabel {
        id: label

        anchors.verticalCenter: parent.verticalCenter
        color: pill.ink
        font.weight: Font.Medium
        text: pill.text
        x: 23
    }
}
