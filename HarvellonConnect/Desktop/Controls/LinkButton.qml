import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// A button drawn as text only.
T.Button {
    id: button

    property color ink: Theme.ink

    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    focusPolicy: Qt.TabFocus
    font.family: Theme.family
    font.pixelSize: Theme.labelSize
    font.weight: Font.Medium
    implicitHeight: Theme.smallButtonSide
    implicitWidth: contentItem.implicitWidth + 16
    opacity: enabled ? 1 : ButtonLook.disabledOpacity

    Keys.forwardTo: ReturnKey {
        onPressed: button.clicked()
    }

    background: Item {
        Box {
            anchors.fill: parent
            color: button.ink
            opacity: button.down ? ButtonLook.hoverFill : button.hovered ? 0.07 : 0
            radius: ButtonLook.radius
        }

        FocusRing {
            anchors.margins: -1
            radius: Theme.rowRadius
            visible: button.visualFocus
        }
    }
    contentItem: Text {
        color: button.ink
        font: button.font
        horizontalAlignment: Text.AlignHCenter
        text: button.text
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
    }
}
