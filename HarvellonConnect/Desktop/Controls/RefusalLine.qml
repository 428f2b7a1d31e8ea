import QtQuick
import Harvellon.Desktop

/// Something that the system does not let the program do, and the way to where the user can allow it. Nothing is made
/// before there is something to tell.
Loader {
    id: line

    required property string text
    property bool closable: false

    signal allowed
    signal dismissed

    visible: text !== ""

    onTextChanged: if (text !== "" && item === null) {
        setSource("RefusalBox.qml", {line: line});
    }
}
