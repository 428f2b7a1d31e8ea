import QtQuick
import Harvellon.Desktop

/// One step on the way to the first mount: whether it is done, and the button that does it.
Item {
    id: step

    required property int number
    required property string title
    required property string text
    required property bool done
    property string buttonText

    signal pressed

    Accessible.description: text
    Accessible.name: title + (done ? ", erledigt" : ", offen")
    Accessible.role: Accessible.StaticText
    height: 46

    Box {
        anchors.verticalCenter: parent.verticalCenter
        color: step.done ? Theme.okBg : Theme.bg
        height: Theme.pictureSide
        radius: width / 2
        width: Theme.pictureSide
        x: 9

        SymbolIcon {
            anchors.centerIn: parent
            color: Theme.okInk
            size: Theme.smallIconSize
            symbol: "checkmark.circle.fill"
            visible: step.done
        }

        BodyLabel {
            anchors.centerIn: parent
            color: Theme.secondary
            text: step.number
            visible: !step.done
        }
    }

    BodyLabel {
        height: Theme.bodyLine
        text: step.title
        x: Theme.textStart
        y: 6
    }

    CaptionLabel {
        elide: Text.ElideRight
        height: Theme.captionLine
        text: step.text
        width: (button.visible ? button.x - 12 : step.width) - x
        x: Theme.textStart
        y: 24
    }

    TextButton {
        id: button

        Accessible.description: step.title
        anchors.right: parent.right
        anchors.rightMargin: 9
        anchors.verticalCenter: parent.verticalCenter
        text: step.buttonText
        visible: text !== ""

        onClicked: step.pressed()
    }
}
