import QtQuick
import Harvellon.Desktop

/// Fingerprints of keys, one to a line, which can be selected and compared.
Column {
    id: fingerprints

    required property string title
    required property string keys

    Accessible.name: title + ": " + keys
    Accessible.role: Accessible.StaticText
    spacing: 2

    CaptionLabel {
        text: fingerprints.title
    }

    TextEdit {
        activeFocusOnPress: false
        color: Theme.ink
        font.family: "monospace"
        font.pixelSize: Theme.captionSize
        readOnly: true
        selectByMouse: true
        selectedTextColor: Theme.primaryInk
        selectionColor: Theme.focus
        text: fingerprints.keys
        textFormat: TextEdit.PlainText
        width: parent.width
        wrapMode: TextEdit.WrapAnywhere
    }
}
