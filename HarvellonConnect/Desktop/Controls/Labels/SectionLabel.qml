import QtQuick

/// The title above a card of the settings.
HeadingLabel {
    color: Theme.secondary
    font.pixelSize: Theme.labelSize
}
