import QtQuick

/// The title of a window or a section, announced as a heading.
Text {
    Accessible.name: text
    Accessible.role: Accessible.Heading
    color: Theme.ink
    font.pixelSize: Theme.titleSize
    font.weight: Theme.titleWeight
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
