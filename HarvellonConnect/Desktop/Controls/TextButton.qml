import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// A button with a word: outlined, or dark for the one thing to do.
T.Button {
    id: button

    property bool primary: false
    property bool dangerous: false
    property string symbol

    readonly property color ink: primary ? Theme.primaryInk : dangerous && hovered ? Theme.danger : Theme.ink
    readonly property color glow: dangerous ? Theme.danger : primary ? Theme.primaryInk : Theme.ink

    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    focusPolicy: Qt.TabFocus
    font.family: Theme.family
    font.pixelSize: Theme.labelSize
    font.weight: Font.Medium
    horizontalPadding: primary ? 14 : 10
    implicitHeight: Theme.buttonSide
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    opacity: enabled ? 1 : ButtonLook.disabledOpacity

    Keys.forwardTo: ReturnKey {
        onPressed: button.clicked()
    }

    background: Box {
        borderColor: button.primary ? Theme.primaryBg : button.hovered ? Qt.alpha(button.glow, ButtonLook.hoverOutline) : Theme.outline
        color: button.primary ? Theme.primaryBg : Theme.card
        radius: ButtonLook.radius

        Box {
            anchors.fill: parent
            color: button.glow
            opacity: button.down ? ButtonLook.pressFill : button.hovered ? ButtonLook.hoverFill : 0
            radius: ButtonLook.radius

            Behavior on opacity {
                NumberAnimation {
                    duration: Theme.hover
                    easing.type: Easing.OutCubic
                }
            }
        }

        FocusRing {
            visible: button.visualFocus
        }
    }
    contentItem: Row {
        scale: button.down && !Theme.still ? ButtonLook.pressScale : 1
        spacing: 6

        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            color: button.ink
            size: Theme.smallIconSize
            symbol: button.symbol
            visible: button.symbol !== ""
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            color: button.ink
            font: button.font
            text: button.text
            textFormat: Text.PlainText
        }
    }
}
