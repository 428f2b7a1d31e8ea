import QtQuick

/// Small secondary text, such as the second line of a row.
Text {
    color: Theme.secondary
    font.pixelSize: Theme.captionSize
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
