import QtQuick
import Harvellon.Desktop

/// A failure, until it is put aside. Nothing is made before there is one: it would take memory all day.
Loader {
    id: line

    required property string text
    property string help ///< the word that offers help with this failure; empty for none

    signal copied
    signal helped
    signal dismissed

    visible: text !== ""

    onTextChanged: if (text !== "" && item === null) {
        setSource("ErrorBox.qml", {line: line});
    }
}
