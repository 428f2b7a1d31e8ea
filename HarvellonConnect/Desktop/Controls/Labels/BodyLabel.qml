import QtQuick

/// The main text of a row or a card.
Text {
    color: Theme.ink
    font.pixelSize: Theme.bodySize
    font.weight: Font.Medium
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
