import QtQuick

Text {
    Accessible.name: text
    Accessible.role: Accessible.Heading
    color: Theme.secondary
    font.pixelSize: Theme.labelSize
    font.weight: Font.DemiBold
    textFormat: Text.PlainText
}
