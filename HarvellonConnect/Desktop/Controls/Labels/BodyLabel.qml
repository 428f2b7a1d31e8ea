import QtQuick

/// The main text of a row or a card.
Text {
    color: Theme.ink
    font.pixelSize: Theme.bodySize
    font.weight: Theme.nameWeight
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
