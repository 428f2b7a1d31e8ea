import QtQuick

/// Lets Return and Enter press a control as Space does: put it into the control's `Keys.forwardTo`.
/// A held key presses once.
Item {
    id: keys

    signal pressed

    Keys.onEnterPressed: event => {
        if (!event.isAutoRepeat)
            keys.pressed();
    }
    Keys.onReturnPressed: event => {
        if (!event.isAutoRepeat)
            keys.pressed();
    }
}
