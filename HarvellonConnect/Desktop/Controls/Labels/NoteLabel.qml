import QtQuick

/// A sentence that explains or reports.
Text {
    color: Theme.secondary
    font.pixelSize: Theme.labelSize
    textFormat: Text.PlainText
}
