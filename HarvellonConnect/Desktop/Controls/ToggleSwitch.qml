import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

T.Switch {
    id: toggle

    function press() {
        toggle.toggle();
        toggle.toggled();
    }

    Accessible.name: text
    Accessible.onPressAction: toggle.press()
    Accessible.onToggleAction: toggle.press()
    focusPolicy: Qt.TabFocus
    implicitHeight: 22
    implicitWidth: 38

    Keys.forwardTo: ReturnKey {
        onPressed: toggle.press()
    }

    indicator: Box {
        color: toggle.checked ? Theme.switchOn : Theme.switchOff
        height: 22
        radius: height / 2
        width: 38

        Box {
            color: toggle.checked ? Theme.knobOn : Theme.knobOff
            height: 18
            radius: height / 2
            width: 18
            x: toggle.checked ? 18 : 2
            y: 2

            Behavior on x {
                NumberAnimation {
                    duration: Theme.hover
                    easing.type: Easing.OutCubic
                }
            }
        }

        FocusRing {
            radius: 14
            visible: toggle.visualFocus
        }
    }
}
